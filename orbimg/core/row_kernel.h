// What a row kernel carries: the clones for wider vector units, and the promise that columns are independent.
//
// ORB_ROW_KERNEL goes before a free function whose loop runs over the columns of a row. Lanes are independent outputs, and
// contraction is off, so every clone gives the same bits. Sanitizer builds have no clones: their runtime is not up yet
// when the loader picks one.
//
// ORB_COLUMNS_INDEPENDENT goes before the column loop itself, where source and destination may be the same row but no
// column reads what another wrote. Never where a loop reads what it wrote one step before.
#pragma once

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
