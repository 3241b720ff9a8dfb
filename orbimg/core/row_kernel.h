// What a row kernel carries: the clones for wider vector units, and the promise that columns are independent.
//
// ORB_ROW_KERNEL goes before a free function whose loop runs over the columns of a row. Lanes are independent outputs,
// and contraction is off, so every clone gives the same bits. Sanitizer builds have no clones: their runtime is not up
// yet when the loader picks one.
//
// ORB_COLUMNS_INDEPENDENT goes before the column loop itself, where source and destination may be the same row but no
// column reads what another wrote. Never where a loop reads what it wrote one step before.
//
// EachBlock splits the columns of a row whose arithmetic keeps the processor waiting, divisions above all, and asks for
// the memory of a later block first: a processor that waits for its divider does not look far ahead by itself.
#pragma once

#include <algorithm>
#include <cstddef>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ORB_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(undefined_behavior_sanitizer)
#define ORB_SANITIZED 1
#endif
#endif

#if defined(__x86_64__) && !defined(ORB_SANITIZED) && !defined(ORB_NO_CLONES)
#define ORB_ROW_KERNEL __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define ORB_ROW_KERNEL
#endif

#if defined(__clang__)
#define ORB_COLUMNS_INDEPENDENT _Pragma("clang loop vectorize(assume_safety)")
#elif defined(__GNUC__)
#define ORB_COLUMNS_INDEPENDENT _Pragma("GCC ivdep")
#else
#define ORB_COLUMNS_INDEPENDENT
#endif

namespace orb {

inline constexpr std::ptrdiff_t kBlockColumns = 256;
inline constexpr std::ptrdiff_t kColumnsAhead = 512;
inline constexpr std::ptrdiff_t kColumnsPerCacheLine = 16;

// Calls columns(begin, end) for the blocks of a row that is read at `src`. What is asked for ahead may lie beyond the
// row: in the next one, or nowhere, which does no harm.
template <typename Columns>
[[gnu::always_inline]] inline void EachBlock(float const* src, std::ptrdiff_t count, Columns columns) {
  for (std::ptrdiff_t begin = 0; begin < count; begin += kBlockColumns) {
    std::ptrdiff_t const end = std::min(count, begin + kBlockColumns);
    for (std::ptrdiff_t x = begin; x < end; x += kColumnsPerCacheLine) __builtin_prefetch(src + x + kColumnsAhead, 0);
    columns(begin, end);
  }
}

// The same for a row that is read at `src` and written at `dst`.
template <typename Columns>
[[gnu::always_inline]] inline void EachBlock(float const* src, float const* dst, std::ptrdiff_t count,
                                             Columns columns) {
  EachBlock(src, count, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (std::ptrdiff_t x = begin; x < end; x += kColumnsPerCacheLine) __builtin_prefetch(dst + x + kColumnsAhead, 1);
    columns(begin, end);
  });
}

}  // namespace orb
