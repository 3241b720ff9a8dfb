// Row work of the digital development.
#pragma once

#include <cstddef>

#include <orbimg/core/level.h>

namespace orb {

// A blurred row to the 256-scale.
void BlurTo256Row(double* blurred, std::ptrdiff_t count, Level level);

// sum += the blurred row, rounded to float, on the 256-scale
void AddBlurTo256Row(double const* blurred, std::ptrdiff_t count, Level level, double* sum);

// values *= 1 / 3
void TakeThirdRow(double* values, std::ptrdiff_t count);

// On the 256-scale, s being the sample: s / (divisor + a) * b, but s where it is 0 or less.
struct DevelopmentCurve {
  double a;
  double b;
};

void DevelopRow(float const* src, double const* divisor, std::ptrdiff_t count, Level from, Level to,
                DevelopmentCurve curve, float* dst);

}  // namespace orb
