#include <orbimg/core/rank_kernels.h>

#include <algorithm>
#include <cstring>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

constexpr std::ptrdiff_t kChunk = 1024;
constexpr std::ptrdiff_t kGroup = 8;  // flags in a word

// flags[x] is 1 for a value inside the bracket. `count` is at most kChunk.
template <typename T>
[[gnu::always_inline]] inline void FlagAndCount(T const* values, std::ptrdiff_t count, Bracket<T> const& bracket,
                                                BracketCounts& counts, unsigned char* flags) {
  std::int32_t below = 0;
  std::int32_t atLow = 0;
  std::int32_t atHigh = 0;
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    below += values[x] < bracket.low ? 1 : 0;
    atLow += values[x] == bracket.low ? 1 : 0;
    atHigh += values[x] == bracket.high ? 1 : 0;
  }
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    flags[x] = static_cast<unsigned char>((values[x] > bracket.low) & (values[x] < bracket.high));
  }
  counts.below += below;
  counts.atLow += atLow;
  counts.atHigh += atHigh;
}

ORB_ROW_KERNEL void FlagFloats(float const* values, std::ptrdiff_t count, Bracket<float> const& bracket,
                               BracketCounts& counts, unsigned char* flags) {
  FlagAndCount(values, count, bracket, counts, flags);
}

ORB_ROW_KERNEL void FlagDoubles(double const* values, std::ptrdiff_t count, Bracket<double> const& bracket,
                                BracketCounts& counts, unsigned char* flags) {
  FlagAndCount(values, count, bracket, counts, flags);
}

// Every value is written, and the place moves on past those that are flagged.
template <typename T>
T* KeepFlagged(T const* values, unsigned char const* flags, std::ptrdiff_t count, T* next) {
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    *next = values[x];
    next += flags[x];
  }
  return next;
}

// Few values are flagged: most groups are passed over at one look.
template <typename T>
T* Collect(T const* values, unsigned char const* flags, std::ptrdiff_t count, T* next) {
  std::ptrdiff_t x = 0;
  for (; x + kGroup <= count; x += kGroup) {
    std::uint64_t group = 0;
    std::memcpy(&group, flags + x, sizeof group);
    if (group != 0) next = KeepFlagged(values + x, flags + x, kGroup, next);
  }
  return KeepFlagged(values + x, flags + x, count - x, next);
}

template <typename T, typename Flag>
std::ptrdiff_t SplitChunks(T const* values, std::ptrdiff_t count, T* inside, Flag flag) {
  unsigned char flags[kChunk];
  T* next = inside;
  for (std::ptrdiff_t x = 0; x < count; x += kChunk) {
    std::ptrdiff_t const n = std::min(kChunk, count - x);
    flag(values + x, n, flags);
    next = Collect(values + x, flags, n, next);
  }
  return next - inside;
}

}  // namespace

std::ptrdiff_t SplitRow(float const* values, std::ptrdiff_t count, Bracket<float> bracket, BracketCounts& counts,
                        float* inside) {
  return SplitChunks(values, count, inside, [&](float const* v, std::ptrdiff_t n, unsigned char* flags) {
    FlagFloats(v, n, bracket, counts, flags);
  });
}

std::ptrdiff_t SplitRow(double const* values, std::ptrdiff_t count, Bracket<double> bracket, BracketCounts& counts,
                        double* inside) {
  return SplitChunks(values, count, inside, [&](double const* v, std::ptrdiff_t n, unsigned char* flags) {
    FlagDoubles(v, n, bracket, counts, flags);
  });
}

}  // namespace orb
