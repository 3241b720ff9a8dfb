#include <orbimg/geometry/binning_kernels.h>

#include <orbimg/core/row_kernel.h>

namespace {

// Terms outside, columns inside a block would read each cache line `bin` times; a column's few terms in a row keep the
// sums in registers, and columns are still independent. With the number of terms known, they are unrolled.
template <int kBin>
[[gnu::always_inline]] inline void AddBins(float const* src, float* sums, std::ptrdiff_t count) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    float sum = sums[i];
    for (int k = 0; k < kBin; ++k) sum += src[i * kBin + k];
    sums[i] = sum;
  }
}

ORB_ROW_KERNEL void AddBins2(float const* src, float* sums, std::ptrdiff_t count) { AddBins<2>(src, sums, count); }
ORB_ROW_KERNEL void AddBins3(float const* src, float* sums, std::ptrdiff_t count) { AddBins<3>(src, sums, count); }
ORB_ROW_KERNEL void AddBins4(float const* src, float* sums, std::ptrdiff_t count) { AddBins<4>(src, sums, count); }

}  // namespace

namespace orb {

// The sum of two floats rounded once is the sum of the same in double, rounded to float: no double is needed.
void AddBinsRow(float const* src, int bin, float* sums, std::ptrdiff_t count) {
  if (bin == 2) return AddBins2(src, sums, count);
  if (bin == 3) return AddBins3(src, sums, count);
  if (bin == 4) return AddBins4(src, sums, count);
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    float sum = sums[i];
    for (int k = 0; k < bin; ++k) sum += src[i * bin + k];
    sums[i] = sum;
  }
}

ORB_ROW_KERNEL void SumPairsRow(float const* upper, float const* lower, float* sums, std::ptrdiff_t count) {
  EachBlock(upper, lower, 2 * count, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t i = begin / 2; i < end / 2; ++i) {
      sums[i] = 0.0f + upper[2 * i] + upper[2 * i + 1] + lower[2 * i] + lower[2 * i + 1];
    }
  });
}

}  // namespace orb
