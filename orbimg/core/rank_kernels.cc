#include <orbimg/core/rank_kernels.h>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

// Rows are shorter than 2^31, so that the counts of one fit the narrow integers that vectors count fastest.
template <typename T>
[[gnu::always_inline]] inline void CountRow(T const* values, std::ptrdiff_t count, Bracket<T> const& bracket,
                                            BracketCounts& counts) {
  std::int32_t below = 0;
  std::int32_t atLow = 0;
  std::int32_t atHigh = 0;
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    below += values[x] < bracket.low ? 1 : 0;
    atLow += values[x] == bracket.low ? 1 : 0;
    atHigh += values[x] == bracket.high ? 1 : 0;
  }
  counts.below += below;
  counts.atLow += atLow;
  counts.atHigh += atHigh;
}

// Every value is written, and the place moves on past those inside: no branch that a processor could guess wrong.
template <typename T>
std::ptrdiff_t CollectRow(T const* values, std::ptrdiff_t count, Bracket<T> const& bracket, T* inside) {
  T* next = inside;
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    *next = values[x];
    next += static_cast<int>(values[x] > bracket.low) & static_cast<int>(values[x] < bracket.high);
  }
  return next - inside;
}

ORB_ROW_KERNEL void CountFloats(float const* values, std::ptrdiff_t count, Bracket<float> const& bracket,
                                BracketCounts& counts) {
  CountRow(values, count, bracket, counts);
}

ORB_ROW_KERNEL void CountDoubles(double const* values, std::ptrdiff_t count, Bracket<double> const& bracket,
                                 BracketCounts& counts) {
  CountRow(values, count, bracket, counts);
}

}  // namespace

void CountAroundBracket(float const* values, std::ptrdiff_t count, Bracket<float> bracket, BracketCounts& counts) {
  CountFloats(values, count, bracket, counts);
}

void CountAroundBracket(double const* values, std::ptrdiff_t count, Bracket<double> bracket, BracketCounts& counts) {
  CountDoubles(values, count, bracket, counts);
}

std::ptrdiff_t CollectInside(float const* values, std::ptrdiff_t count, Bracket<float> bracket, float* inside) {
  return CollectRow(values, count, bracket, inside);
}

std::ptrdiff_t CollectInside(double const* values, std::ptrdiff_t count, Bracket<double> bracket, double* inside) {
  return CollectRow(values, count, bracket, inside);
}

}  // namespace orb
