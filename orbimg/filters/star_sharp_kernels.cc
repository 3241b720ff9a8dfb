#include <orbimg/filters/star_sharp_kernels.h>

#include <cmath>

#include <orbimg/core/row_kernel.h>

namespace orb {

// v = (position - i) * (s[i + 1] - s[i]) + s[i]; c where it is the peak, or where |v / s[n - 1] - 1| is not at or above
// the threshold; otherwise v
ORB_ROW_KERNEL void SharpenStarsRow(float const* src, float const* low, float const* high, float const* top,
                                    std::ptrdiff_t count, StarSharpRule const& rule, float* dst) {
  StarSharpRule const r = rule;
  bool const doTest = r.threshold != 0.0;
  if (r.isLast) high = low;
  if (!r.NeedsTop()) top = low;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    float const c = src[x];
    double const s = low[x];
    double const between = r.fraction * (static_cast<double>(high[x]) - s) + s;
    double const v = r.isLast ? s : between;
    bool const isPeak = r.doesKeepPeaks & (top[x] == c);
    bool const isNear = doTest & !(std::fabs(v / static_cast<double>(top[x]) - 1.0) >= r.threshold);
    dst[x] = (isPeak | isNear) ? c : static_cast<float>(v);
  }
}

}  // namespace orb
