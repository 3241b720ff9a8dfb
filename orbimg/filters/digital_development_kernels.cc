// Three divisions a column are what this operator costs. Those by a level range become products with its reciprocal:
// the results are off by a few roundings and nearly always lead to the same float. A block of columns that has one
// where they may not is done once more with the divisions of the formula.
#include <orbimg/filters/digital_development_kernels.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

constexpr double kThird = 0.3333333333333333;
constexpr std::ptrdiff_t kColumns = 512;  // of a block
constexpr double kUnit = 0x1p-53;         // the largest relative error of one rounding

// A sample on the 256-scale is off by 6 roundings at most.
constexpr double kSampleError = 16.0 * kUnit;
// So is the blur, by which a sum with `a` is off 64 times as much where it is not smaller than a 64th of the blur. The
// rest of the formula adds less than 20.
constexpr double kMostCancelled = 64.0;
constexpr double kCurveError = 600.0 * kUnit;
constexpr double kSumError = 4.0 * kUnit;
// Beyond these the reciprocal of a range loses digits, or its products do.
constexpr double kLeastRange = 1e-200;
constexpr double kLargestRange = 1e200;

bool HasReciprocal(Level const& level) {
  double const range = std::fabs(level.range);
  return range >= kLeastRange && range <= kLargestRange;
}

[[gnu::always_inline]] inline bool RoundsAlike(double low, double high) {
  return std::bit_cast<std::uint32_t>(static_cast<float>(low)) ==
         std::bit_cast<std::uint32_t>(static_cast<float>(high));
}

struct Blurred {
  Level level;
  double reciprocal;

  [[gnu::always_inline]] double Divided(double v) const { return level.To256(v); }
  [[gnu::always_inline]] double Multiplied(double v) const { return (v - level.min) * reciprocal * 255.0; }
  [[gnu::always_inline]] static bool IsSure(double v, double sum) {
    return std::fabs(v) <= kMostCancelled * std::fabs(sum);
  }
};

struct On256Scale {
  [[gnu::always_inline]] static double Divided(double v) { return v; }
  [[gnu::always_inline]] static double Multiplied(double v) { return v; }
  [[gnu::always_inline]] static bool IsSure(double, double) { return true; }
};

template <typename Divisor>
[[gnu::always_inline]] inline void DevelopPlainly(float const* src, double const* divisor, std::ptrdiff_t count,
                                                  Divisor const& scale, DevelopmentCurve const& curve, float* dst) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    // Intended: a float already here.
    double const s = static_cast<float>(curve.from.To256(src[x]));
    double const developed = s / (scale.Divided(divisor[x]) + curve.a) * curve.b;
    dst[x] = static_cast<float>(curve.to.ToRaw(s <= 0.0 ? s : developed));
  }
}

// Returns whether all columns are sure to be those of DevelopPlainly.
template <typename Divisor>
[[gnu::always_inline]] inline bool DevelopQuickly(float const* src, double const* divisor, std::ptrdiff_t count,
                                                  Divisor const& scale, DevelopmentCurve const& curve, float* dst) {
  double const reciprocal = 1.0 / curve.from.range;
  int doubts = 0;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    double const on256 = (src[x] - curve.from.min) * reciprocal * 255.0;
    double const s = static_cast<float>(on256);
    double const v = scale.Multiplied(divisor[x]);
    double const sum = v + curve.a;
    double const above = curve.to.range * (s / sum * curve.b) * kInverse255;
    double const developed = above + curve.to.min;
    double const error = std::fabs(above) * kCurveError + std::fabs(developed) * kSumError;
    bool const isSampleSure = RoundsAlike(on256 * (1.0 - kSampleError), on256 * (1.0 + kSampleError));
    bool const isResultSure = RoundsAlike(developed - error, developed + error);
    bool const isDivisorSure = Divisor::IsSure(v, sum);
    bool const isCurveSure = isResultSure & isDivisorSure;
    bool const isLinear = s <= 0.0;
    bool const isSure = isSampleSure & (isLinear | isCurveSure);
    doubts |= isSure ? 0 : 1;
    dst[x] = static_cast<float>(isLinear ? curve.to.ToRaw(s) : developed);
  }
  return doubts == 0;
}

template <typename Divisor>
[[gnu::always_inline]] inline void Develop(float const* src, double const* divisor, std::ptrdiff_t count,
                                           Divisor const& scale, bool hasReciprocals, DevelopmentCurve const& curve,
                                           float* dst) {
  for (std::ptrdiff_t x = 0; x < count; x += kColumns) {
    std::ptrdiff_t const n = std::min(kColumns, count - x);
    bool const isSure = hasReciprocals && DevelopQuickly(src + x, divisor + x, n, scale, curve, dst + x);
    if (!isSure) DevelopPlainly(src + x, divisor + x, n, scale, curve, dst + x);
  }
}

}  // namespace

ORB_ROW_KERNEL void AddBlurTo256Row(double const* blurred, std::ptrdiff_t count, Level level, double* sum) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) sum[x] += level.To256(static_cast<float>(blurred[x]));
}

ORB_ROW_KERNEL void TakeThirdRow(double* values, std::ptrdiff_t count) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) values[x] *= kThird;
}

ORB_ROW_KERNEL void DevelopRow(float const* src, double const* blurred, std::ptrdiff_t count, Level blurLevel,
                               DevelopmentCurve const& curve, float* dst) {
  bool const hasReciprocals = HasReciprocal(curve.from) && HasReciprocal(blurLevel);
  Develop(src, blurred, count, Blurred{blurLevel, 1.0 / blurLevel.range}, hasReciprocals, curve, dst);
}

ORB_ROW_KERNEL void DevelopRow(float const* src, double const* divisor, std::ptrdiff_t count,
                               DevelopmentCurve const& curve, float* dst) {
  Develop(src, divisor, count, On256Scale{}, HasReciprocal(curve.from), curve, dst);
}

}  // namespace orb
