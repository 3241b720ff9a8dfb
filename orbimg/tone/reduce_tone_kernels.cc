#include <orbimg/tone/reduce_tone_kernels.h>

#include <cmath>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

// step / n without a division, for whole steps from 0 to n <= kMostTones. 1 / n is held in two parts: step * high is
// exact, as high has 24 bits and step 9, so that the sum is off step / n by less than 2^-76 of it before it is rounded.
// A quotient of such small numbers that is no double lies at least 2^-62 of itself from the middle between two
// doubles, so the rounded sum is the rounded quotient.
struct ToneQuotient {
  explicit ToneQuotient(int n) : high(static_cast<float>(1.0 / n)), low((1.0 - n * high) / n) {}

  double Of(double step) const { return step * high + step * low; }

  double high;
  double low;
};

inline double Limit(double v) {
  double const atLeast = v <= 0.0 ? 0.0 : v;
  return atLeast >= 255.0 ? 255.0 : atLeast;
}

}  // namespace

ORB_ROW_KERNEL void ReduceToneRow(float const* src, float* dst, std::ptrdiff_t count, Level level, int n) {
  ToneQuotient const quotient(n);
  double const tones = n;
  EachBlock(src, dst, count, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t x = begin; x < end; ++x) {
      double const step = std::floor(tones * Limit(level.To256(src[x])) * kInverse256);
      dst[x] = static_cast<float>(level.ToRaw(quotient.Of(step) * 255.0));
    }
  });
}

}  // namespace orb
