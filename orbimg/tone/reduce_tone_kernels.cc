#include <orbimg/tone/reduce_tone_kernels.h>

#include <bit>
#include <cmath>
#include <cstdint>

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

// The same in two instructions, but for a -0.0 that stays one. What is not a number stays so too.
inline double LimitKeepingSign(double v) {
  double const atLeast = 0.0 > v ? 0.0 : v;
  return 255.0 < atLeast ? 255.0 : atLeast;
}

ORB_ROW_KERNEL void ReduceToneRow(float const* src, float* dst, std::ptrdiff_t count, Level level, int n) {
  ToneQuotient const quotient(n);
  double const tones = n * kInverse256;  // exact, so that tones * v is n * v * (1 / 256) to the bit
  EachBlock(src, dst, count, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t x = begin; x < end; ++x) {
      double const step = std::floor(tones * Limit(level.To256(src[x])));
      dst[x] = static_cast<float>(level.ToRaw(quotient.Of(step) * 255.0));
    }
  });
}

ORB_ROW_KERNEL void ReduceToneRowShort(float const* src, float* dst, std::ptrdiff_t count, Level level, int n,
                                       double rawPerStep) {
  double const tones = n * kInverse256;
  EachBlock(src, dst, count, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t x = begin; x < end; ++x) {
      double const step = std::floor(tones * LimitKeepingSign(level.To256(src[x])));
      dst[x] = static_cast<float>(step * rawPerStep + level.min);
    }
  });
}

std::uint32_t BitsOf(float sample) { return std::bit_cast<std::uint32_t>(sample); }

// Whether the short form gives all tones, and that of a step of -0.0.
bool IsShortOnEveryStep(Level level, int n, double rawPerStep) {
  // What is not a number may carry other bits each way.
  if (!std::isfinite(level.min) || !std::isfinite(rawPerStep)) return false;
  ToneQuotient const quotient(n);
  auto const isShort = [&](double step) {
    float const plain = static_cast<float>(level.ToRaw(quotient.Of(std::abs(step)) * 255.0));
    return BitsOf(static_cast<float>(step * rawPerStep + level.min)) == BitsOf(plain);
  };
  if (!isShort(-0.0)) return false;
  for (int step = 0; step < n; ++step) {
    if (!isShort(step)) return false;
  }
  return true;
}

}  // namespace

ToneScale::ToneScale(Level initLevel, int initN)
    : level(initLevel),
      n(initN),
      rawPerStep(initLevel.range / initN),
      isShort(IsShortOnEveryStep(initLevel, initN, rawPerStep)) {}

void ToneScale::ReduceRow(float const* src, float* dst, std::ptrdiff_t count) const {
  if (isShort) {
    ReduceToneRowShort(src, dst, count, level, n, rawPerStep);
  } else {
    ReduceToneRow(src, dst, count, level, n);
  }
}

}  // namespace orb
