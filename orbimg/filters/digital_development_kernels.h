// Row work of the digital development.
#pragma once

#include <cstddef>

#include <orbimg/core/level.h>

namespace orb {

// sum += the blurred row, rounded to float, on the 256-scale
void AddBlurTo256Row(double const* blurred, std::ptrdiff_t count, Level level, double* sum);

// values *= 1 / 3
void TakeThirdRow(double* values, std::ptrdiff_t count);

// On the 256-scale, s being the sample: s / (divisor + a) * b, but s where it is 0 or less.
struct DevelopmentCurve {
  Level from;
  Level to;
  double a;
  double b;
};

// The divisor is a blurred row in raw units, which its level brings to the 256-scale.
void DevelopRow(float const* src, double const* blurred, std::ptrdiff_t count, Level blurLevel,
                DevelopmentCurve const& curve, float* dst);

// The divisor is on the 256-scale already.
void DevelopRow(float const* src, double const* divisor, std::ptrdiff_t count, DevelopmentCurve const& curve,
                float* dst);

}  // namespace orb
