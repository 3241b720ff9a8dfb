#include <algorithm>

#include <orbimg/core/row_kernel.h>
#include <orbimg/filters/convolution_kernels.h>
#include <orbimg/filters/wide_kernels.h>

namespace {

constexpr std::ptrdiff_t kBlock = 512;  // columns whose sums stay in the first cache

// totals[x] += factors[i] * (sums[x - i] + sums[x + i]) for kPairs values of i from `first` on.
template <int kPairs>
[[gnu::always_inline]] inline void AddPairs(double const* sums, double const* factors, int first, std::ptrdiff_t count,
                                            double* totals) {
  double const* left[kPairs];
  double const* right[kPairs];
  double weights[kPairs];
  for (int i = 0; i < kPairs; ++i) {
    left[i] = sums - first - i;
    right[i] = sums + first + i;
    weights[i] = factors[first + i];
  }
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    double total = totals[x];
    for (int i = 0; i < kPairs; ++i) total += weights[i] * (left[i][x] + right[i][x]);
    totals[x] = total;
  }
}

// Functions of their own, one a kind: a compiler that sees them all in one loop joins them, and then makes no vectors.
ORB_ROW_KERNEL void AddFivePairs(double const* sums, double const* factors, int first, std::ptrdiff_t count,
                                 double* totals) {
  AddPairs<5>(sums, factors, first, count, totals);
}
ORB_ROW_KERNEL void AddTwoPairs(double const* sums, double const* factors, int first, std::ptrdiff_t count,
                                double* totals) {
  AddPairs<2>(sums, factors, first, count, totals);
}
ORB_ROW_KERNEL void AddPair(double const* sums, double const* factors, int first, std::ptrdiff_t count,
                            double* totals) {
  AddPairs<1>(sums, factors, first, count, totals);
}

ORB_ROW_KERNEL void Scale(double const* sums, double factor, std::ptrdiff_t count, double* totals) {
  for (std::ptrdiff_t x = 0; x < count; ++x) totals[x] = factor * sums[x];
}

ORB_ROW_KERNEL void Narrow(double const* totals, std::ptrdiff_t count, float* out) {
  for (std::ptrdiff_t x = 0; x < count; ++x) out[x] = static_cast<float>(totals[x]);
}

}  // namespace

namespace orb {

ORB_ROW_KERNEL void ClipRow(float const* samples, std::ptrdiff_t count, float lo, float hi, float* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    float const v = samples[x];
    out[x] = v <= lo ? lo : v >= hi ? hi : v;
  }
}

void FoldRow(double const* sums, double const* factors, int radius, std::ptrdiff_t count, float* out) {
  if (count >= kLeastColumns && HasWideVectors()) return FoldWideRow(sums, factors, radius, count, out);
  alignas(64) double totals[kBlock];
  for (std::ptrdiff_t begin = 0; begin < count; begin += kBlock) {
    std::ptrdiff_t const n = std::min(kBlock, count - begin);
    double const* const from = sums + begin;
    Scale(from, factors[0], n, totals);
    int i = 1;
    for (; i + 5 <= radius + 1; i += 5) AddFivePairs(from, factors, i, n, totals);
    for (; i + 2 <= radius + 1; i += 2) AddTwoPairs(from, factors, i, n, totals);
    for (; i <= radius; ++i) AddPair(from, factors, i, n, totals);
    Narrow(totals, n, out + begin);
  }
}

}  // namespace orb
