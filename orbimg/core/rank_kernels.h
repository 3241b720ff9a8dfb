// The row loop of a selection by rank.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orb {

template <typename T>
struct Bracket {
  T low;
  T high;
};

struct BracketCounts {
  std::int64_t below = 0;   // v < low
  std::int64_t atLow = 0;   // v == low
  std::int64_t atHigh = 0;  // v == high
};

// Counts the values around the bracket, copies those with low < v < high to `inside`, in their order, and returns how
// many these are. `inside` has room for `count`.
std::ptrdiff_t SplitRow(float const* values, std::ptrdiff_t count, Bracket<float> bracket, BracketCounts& counts,
                        float* inside);
std::ptrdiff_t SplitRow(double const* values, std::ptrdiff_t count, Bracket<double> bracket, BracketCounts& counts,
                        double* inside);

}  // namespace orb
