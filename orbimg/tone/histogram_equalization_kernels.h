// Rows of the equalisation.
#pragma once

#include <cstddef>

namespace orb {

inline constexpr int kNoBin = -1;

// trunc((s - min) / range * 256.0), held in 0 to 257; kNoBin where s is not a number.
void RankBinRow(float const* src, std::ptrdiff_t count, double min, double range, int* bins);

// The levels of ranks: k * range / samples + min.
void RankLevelRow(double const* ranks, std::ptrdiff_t count, double range, double samples, double min, float* levels);

}  // namespace orb
