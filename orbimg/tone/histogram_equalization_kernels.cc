#include <orbimg/tone/histogram_equalization_kernels.h>

#include <orbimg/core/row_kernel.h>

namespace orb {

ORB_ROW_KERNEL void RankBinRow(float const* src, std::ptrdiff_t count, double min, double range, int* bins) {
  EachBlock(src, count, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t x = begin; x < end; ++x) {
      double const t = (src[x] - min) / range * 256.0;
      double const atMost = t > 257.0 ? 257.0 : t;
      double const held = atMost < 0.0 ? 0.0 : atMost;
      bins[x] = static_cast<int>(held == held ? held : kNoBin);
    }
  });
}

ORB_ROW_KERNEL void RankLevelRow(double const* ranks, std::ptrdiff_t count, double range, double samples, double min,
                                 float* levels) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) levels[i] = static_cast<float>(ranks[i] * range / samples + min);
}

}  // namespace orb
