// Rows of false colours: from samples to values, and from values to colours.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>

#include <orbimg/core/level.h>
#include <orbimg/tone/color_ramp_internal.h>

namespace orb {

// From the 256-scale to 0 at the lower limit and 255 at the upper one.
struct FalseColorScale {
  double lo;
  double range;

  double Of(double v) const { return (v - lo) / range * 255.0; }
};

inline double LimitToRamp(double v) { return v < 0.0 ? 0.0 : v > 255.0 ? 255.0 : v; }

// v limited to 0 to 255, and with `repeat` above 0 repeat * v modulo 256.0, limited again. The product is not negative,
// and division by 256.0, the whole number and the difference are exact, so this is the modulo to the bit.
inline double Wrapped(double value, int repeat) {
  double const v = LimitToRamp(value);
  if (repeat <= 0) return v;
  double const product = repeat * v;
  return LimitToRamp(product - 256.0 * std::floor(product * kInverse256));
}

// The values of a row's pixels, each rounded to a float: of a mono source, and of the brightness of a colour one. The
// latter takes the lower level of each plane alone.
void FalseColorValueRow(float const* src, std::ptrdiff_t count, Level level, FalseColorScale scale, double* values);
void FalseColorValueRow(std::array<float const*, 3> const& src, std::array<double, 3> const& min, std::ptrdiff_t count,
                        FalseColorScale scale, double* values);

void WrapValueRow(double* values, std::ptrdiff_t count, int repeat);

// One channel of the colours, stored by `to`.
void PaintRow(double const* values, std::ptrdiff_t count, ColorRamp const& ramp, int channel, Level to, float* dst);

}  // namespace orb
