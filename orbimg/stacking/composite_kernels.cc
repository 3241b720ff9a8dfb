#include <orbimg/stacking/composite_kernels.h>

#include <cmath>

#include <orbimg/core/row_kernel.h>
#include <orbimg/stacking/composite_modes_internal.h>

namespace {

using orb::Combination;
using orb::Level;

// Full scale of the 256-scale as a factor of 1, so that it is neutral in products and quotients.
inline double FactorOf(double b, double darkest) {
  if (b <= darkest) return darkest * orb::kInverse255;
  if (b >= 255.0) return 1.0;
  return b * orb::kInverse255;
}

struct RawScale {
  double In(float raw) const { return raw; }
  float Out(double v) const { return static_cast<float>(v); }
  static double Product(double a, double b) { return a * b; }
  static double Quotient(double a, double b) { return a / (b == 0.0 ? 1.0 : b); }
};

struct Scale256 {
  Level from;
  Level to;

  double In(float raw) const { return from.To256(raw); }
  float Out(double v) const { return static_cast<float>(to.ToRaw(v)); }
  static double Product(double a, double b) { return a * FactorOf(b, 0.0); }
  static double Quotient(double a, double b) { return a / FactorOf(b, 0.001); }
};

template <typename Scale, typename Second, typename Formula>
[[gnu::always_inline]] inline void EachColumn(Scale scale, float const* first, Second const* second,
                                              std::ptrdiff_t count, float* dst, Formula formula) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    dst[x] = scale.Out(formula(scale.In(first[x]), static_cast<double>(second[x])));
  }
}

template <typename Scale, typename Second>
[[gnu::always_inline]] inline void CombineRow(Combination const& combination, Scale scale, float const* first,
                                              Second const* second, std::ptrdiff_t count, float* dst) {
  double const ratio = combination.ratio;
  switch (combination.mode) {
    case orb::kAverage:
      return EachColumn(scale, first, second, count, dst, [](double a, double b) { return (a + b) * 0.5; });
    case orb::kAdd:
      return EachColumn(scale, first, second, count, dst, [](double a, double b) { return a + b; });
    case orb::kWeighted:
      return EachColumn(scale, first, second, count, dst,
                        [ratio](double a, double b) { return (1 - ratio) * a + ratio * b; });
    case orb::kSubtract:
      if (!combination.clamp) {
        return EachColumn(scale, first, second, count, dst, [](double a, double b) { return a - b; });
      }
      return EachColumn(scale, first, second, count, dst, [](double a, double b) { return a - b < 0.0 ? 0.0 : a - b; });
    case orb::kMultiply:
      return EachColumn(scale, first, second, count, dst, [](double a, double b) { return Scale::Product(a, b); });
    case orb::kDivide:
      return EachColumn(scale, first, second, count, dst, [](double a, double b) { return Scale::Quotient(a, b); });
    case orb::kDifference:
      return EachColumn(scale, first, second, count, dst, [](double a, double b) { return std::fabs(a - b); });
    case orb::kMaximum:
      return EachColumn(scale, first, second, count, dst, [](double a, double b) { return a <= b ? b : a; });
    case orb::kMinimum:
      return EachColumn(scale, first, second, count, dst, [](double a, double b) { return a >= b ? b : a; });
    default:
      return EachColumn(scale, first, second, count, dst, [](double a, double) { return a; });
  }
}

}  // namespace

namespace orb {

ORB_ROW_KERNEL void CombineRawRow(Combination const& combination, float const* first, float const* second,
                                  std::ptrdiff_t count, float* dst) {
  CombineRow(combination, RawScale{}, first, second, count, dst);
}

ORB_ROW_KERNEL void CombineRawRow(Combination const& combination, float const* first, double const* second,
                                  std::ptrdiff_t count, float* dst) {
  CombineRow(combination, RawScale{}, first, second, count, dst);
}

ORB_ROW_KERNEL void Combine256Row(Combination const& combination, float const* first, Level from, float const* second,
                                  std::ptrdiff_t count, Level to, float* dst) {
  CombineRow(combination, Scale256{from, to}, first, second, count, dst);
}

ORB_ROW_KERNEL void Combine256Row(Combination const& combination, float const* first, Level from, double const* second,
                                  std::ptrdiff_t count, Level to, float* dst) {
  CombineRow(combination, Scale256{from, to}, first, second, count, dst);
}

}  // namespace orb
