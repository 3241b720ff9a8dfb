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

// Row y of a gaussian of sigma s about the origin, wrapped at the edges: 159.15507752443827 exp(-(x x + y y)/(2 s s)).
// False, and nothing written, where all of it is 0 as floats.
bool FillGaussRow(double s, double y, std::ptrdiff_t width, float* row);

// y = y conj(b)/(|b| |b| + k)
void WienerDivideRow(float* y, float const* b, std::ptrdiff_t count, double k);

// Samples on the 256-scale with imaginary parts of 0, and real parts back to raw samples.
void LoadWienerRow(float const* samples, std::ptrdiff_t count, Level level, float* row);
void StoreWienerRow(float const* row, std::ptrdiff_t count, Level level, float* samples);
// The same without imaginary parts.
void LoadRealRow(float const* samples, std::ptrdiff_t count, Level level, float* row);
void StoreRealRow(float const* row, std::ptrdiff_t count, Level level, float* samples);

}  // namespace orb
