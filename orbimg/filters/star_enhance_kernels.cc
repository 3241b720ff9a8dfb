#include <orbimg/filters/star_enhance_kernels.h>

#include <cmath>

#include <orbimg/core/row_kernel.h>

namespace orb {

ORB_ROW_KERNEL void MakeAbsoluteRow(float* samples, std::ptrdiff_t count) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) samples[x] = std::fabs(samples[x]);
}

ORB_ROW_KERNEL void KeepStrongEdgesRow(double const* laplacian, std::ptrdiff_t count, double threshold, float* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    double const e = std::fabs(laplacian[x]);
    out[x] = static_cast<float>(e < threshold ? 0.0 : e);
  }
}

ORB_ROW_KERNEL void AddEdgesRow(float const* src, double const* edges, std::ptrdiff_t count, double strength,
                                float* dst) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    // Intended: rounded before the sum. The sum of two floats is then one rounding.
    dst[x] = src[x] + static_cast<float>(edges[x] * strength);
  }
}

}  // namespace orb
