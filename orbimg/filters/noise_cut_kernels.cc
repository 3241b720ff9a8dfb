#include <orbimg/filters/noise_cut_kernels.h>

#include <cmath>

#include <orbimg/core/row_kernel.h>

namespace orb {

// q = |m / c - 1|: m where c < m and q > coolThreshold, or c > m and q > hotThreshold; otherwise c
ORB_ROW_KERNEL void CutNoiseRow(float const* src, float const* medians, std::ptrdiff_t count, NoiseLimits const& limits,
                                float* dst) {
  NoiseLimits const l = limits;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    float const c = src[x];
    float const m = medians[x];
    // Intended: the ratio is taken to the sample, not to the median.
    double const q = std::fabs(static_cast<double>(m) / static_cast<double>(c) - 1.0);
    bool const isCool = l.cutCool & (c < m) & (q > l.coolThreshold);
    bool const isHot = l.cutHot & (c > m) & (q > l.hotThreshold);
    dst[x] = isCool | isHot ? m : c;
  }
}

}  // namespace orb
