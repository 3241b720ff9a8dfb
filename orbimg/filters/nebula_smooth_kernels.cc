#include <orbimg/filters/nebula_smooth_kernels.h>

#include <algorithm>
#include <cmath>

#include <orbimg/core/row_kernel.h>

namespace {

constexpr std::ptrdiff_t kColumns = 64;  // whose sums stay in registers or the first cache over all taps

[[gnu::always_inline]] inline void AddTap(orb::Tap const& tap, std::ptrdiff_t first, std::ptrdiff_t count, float* sums,
                                          float* weights) {
  float const* const samples = tap.samples + first;
  auto const weight = static_cast<float>(tap.weight);  // it came from a float
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    float const v = samples[x];
    bool const isMarked = v == orb::kEdgeMarker;
    auto const sum = static_cast<float>(static_cast<double>(sums[x]) + tap.weight * static_cast<double>(v));
    sums[x] = isMarked ? sums[x] : sum;
    weights[x] = isMarked ? weights[x] : weights[x] + weight;
  }
}

}  // namespace

namespace orb {

ORB_ROW_KERNEL bool MarkEdgesRow(double const* laplacian, float const* samples, std::ptrdiff_t count, double threshold,
                                 float* out) {
  int found = 0;
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    out[x] = std::fabs(laplacian[x]) >= threshold ? kEdgeMarker : samples[x];
    found |= out[x] == kEdgeMarker ? 1 : 0;
  }
  return found != 0;
}

ORB_ROW_KERNEL void LowerToRow(std::int32_t const* distance, std::int32_t reach, std::ptrdiff_t count,
                               std::int32_t* nearest) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) nearest[x] = std::min(nearest[x], distance[x] - reach);
}

ORB_ROW_KERNEL void SumUnmarkedRow(Tap const* taps, std::size_t tapCount, std::ptrdiff_t count, float* sums,
                                   float* weights) {
  for (std::ptrdiff_t first = 0; first < count; first += kColumns) {
    std::ptrdiff_t const n = std::min(kColumns, count - first);
    float sum[kColumns] = {};
    float weight[kColumns] = {};
    for (std::size_t t = 0; t < tapCount; ++t) AddTap(taps[t], first, n, sum, weight);
    std::copy_n(sum, n, sums + first);
    std::copy_n(weight, n, weights + first);
  }
}

ORB_ROW_KERNEL void StoreMeansRow(float const* sums, float const* weights, std::int32_t const* nearest,
                                  float const* src, std::ptrdiff_t count, float* dst) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    float const mean = sums[x] / weights[x];
    bool const isKept = (nearest[x] <= 0) | (weights[x] == 0.0f);
    dst[x] = isKept ? src[x] : mean;
  }
}

}  // namespace orb
