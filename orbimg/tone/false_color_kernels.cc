#include <orbimg/tone/false_color_kernels.h>

#include <orbimg/core/row_kernel.h>

namespace orb {

ORB_ROW_KERNEL void FalseColorValueRow(float const* src, std::ptrdiff_t count, Level level, FalseColorScale scale,
                                       double* values) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) values[x] = static_cast<float>(scale.Of(level.To256(src[x])));
}

ORB_ROW_KERNEL void FalseColorValueRow(std::array<float const*, 3> const& src, std::array<double, 3> const& min,
                                       std::ptrdiff_t count, FalseColorScale scale, double* values) {
  auto const [red, green, blue] = src;
  auto const [redMin, greenMin, blueMin] = min;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    double const r = scale.Of(red[x] - redMin);
    double const g = scale.Of(green[x] - greenMin);
    double const b = scale.Of(blue[x] - blueMin);
    // Order fixed: green, red, blue.
    values[x] = static_cast<float>(kGreenWeight * g + kRedWeight * r + kBlueWeight * b);
  }
}

ORB_ROW_KERNEL void WrapValueRow(double* values, std::ptrdiff_t count, int repeat) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) values[x] = Wrapped(values[x], repeat);
}

ORB_ROW_KERNEL void PaintRow(double const* values, std::ptrdiff_t count, ColorRamp const& ramp, int channel, Level to,
                             float* dst) {
  float const* const colors = ramp.entries[channel];
  if (colors == nullptr) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t x = 0; x < count; ++x) {
      dst[x] = static_cast<float>(to.ToRaw(static_cast<float>(values[x])));
    }
    return;
  }
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    // A colour is a float before it meets the levels.
    dst[x] = static_cast<float>(to.ToRaw(static_cast<float>(ramp.Between(colors, values[x]))));
  }
}

}  // namespace orb
