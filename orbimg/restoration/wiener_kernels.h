// Rows of complex values, as pairs of floats, in the Wiener filter.
#pragma once

#include <cstddef>

#include <orbimg/core/level.h>

namespace orb {

struct PowerRange {
  float least;
  float most;
};

// Of re re + im im of `count` values, at least one.
PowerRange FindPowerRange(float const* values, std::ptrdiff_t count);

// y = y conj(b)/(|b| |b| + k)
void WienerDivideRow(float* y, float const* b, std::ptrdiff_t count, double k);

// Samples on the 256-scale with imaginary parts of 0, and real parts back to raw samples.
void LoadWienerRow(float const* samples, std::ptrdiff_t count, Level level, float* row);
void StoreWienerRow(float const* row, std::ptrdiff_t count, Level level, float* samples);

}  // namespace orb
