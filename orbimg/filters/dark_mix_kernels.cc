#include <orbimg/filters/dark_mix_kernels.h>

#include <orbimg/core/constants.h>
#include <orbimg/core/row_kernel.h>

namespace orb {

ORB_ROW_KERNEL void MixDarkRow(float const* src, double const* means, double const* gauge, std::ptrdiff_t count,
                               Fade const& fade, float* dst) {
  double const level = fade.level;
  double const band = fade.band;
  double const strength = fade.strength;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    double const c = src[x];
    double const v = gauge[x];
    double w = v > level - band ? (1.0 - (v - (level - band)) / band) * strength : strength;
    w = w > 1.0 ? 1.0 : w;
    double const mixed = means[x] * w + (1.0 - w) * c;
    dst[x] = v > level ? src[x] : static_cast<float>(mixed);
  }
}

ORB_ROW_KERNEL void GaugeRawRow(float const* samples, std::ptrdiff_t count, double* gauge) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) gauge[x] = samples[x];
}

ORB_ROW_KERNEL void GaugePlaneRow(float const* samples, std::ptrdiff_t count, Level level, double* gauge) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) gauge[x] = level.To256(samples[x]);
}

ORB_ROW_KERNEL void GaugeColourRow(float const* r, float const* g, float const* b, std::ptrdiff_t count,
                                   Level const levels[3], double* gauge) {
  Level const red = levels[0];
  Level const green = levels[1];
  Level const blue = levels[2];
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    // Order fixed: red first.
    gauge[x] = kRedWeight * red.To256(r[x]) + kGreenWeight * green.To256(g[x]) + kBlueWeight * blue.To256(b[x]);
  }
}

}  // namespace orb
