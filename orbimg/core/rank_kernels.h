// The two row loops of a selection by rank.
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

void CountAroundBracket(float const* values, std::ptrdiff_t count, Bracket<float> bracket, BracketCounts& counts);
void CountAroundBracket(double const* values, std::ptrdiff_t count, Bracket<double> bracket, BracketCounts& counts);

// Copies the values with low < v < high to `inside`, in their order, and returns how many. `inside` has room for
// `count`.
std::ptrdiff_t CollectInside(float const* values, std::ptrdiff_t count, Bracket<float> bracket, float* inside);
std::ptrdiff_t CollectInside(double const* values, std::ptrdiff_t count, Bracket<double> bracket, double* inside);

}  // namespace orb
