#include <orbimg/filters/digital_development_kernels.h>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

constexpr double kThird = 0.3333333333333333;

}  // namespace

ORB_ROW_KERNEL void BlurTo256Row(double* blurred, std::ptrdiff_t count, Level level) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) blurred[x] = level.To256(blurred[x]);
}

ORB_ROW_KERNEL void AddBlurTo256Row(double const* blurred, std::ptrdiff_t count, Level level, double* sum) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) sum[x] += level.To256(static_cast<float>(blurred[x]));
}

ORB_ROW_KERNEL void TakeThirdRow(double* values, std::ptrdiff_t count) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) values[x] *= kThird;
}

ORB_ROW_KERNEL void DevelopRow(float const* src, double const* divisor, std::ptrdiff_t count, Level from, Level to,
                               DevelopmentCurve curve, float* dst) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    // Intended: a float already here.
    double const s = static_cast<float>(from.To256(src[x]));
    double const developed = s / (divisor[x] + curve.a) * curve.b;
    dst[x] = static_cast<float>(to.ToRaw(s <= 0.0 ? s : developed));
  }
}

}  // namespace orb
