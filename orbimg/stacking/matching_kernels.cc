#include <orbimg/stacking/matching_kernels.h>

#include <orbimg/core/row_kernel.h>

namespace orb {

ORB_ROW_KERNEL void WidenBlock(float const* in, std::ptrdiff_t inStride, std::ptrdiff_t columns, int rows, double r,
                               double* out, std::ptrdiff_t outStride) {
  for (int y = 0; y < rows; ++y) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t x = 0; x < columns; ++x) out[x] = in[x] * r;
    in += inStride;
    out += outStride;
  }
}

ORB_ROW_KERNEL void InterpolateColumnsRow(float const* a, float const* b, double const* f, std::ptrdiff_t count,
                                          double* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) out[x] = b[x] * f[x] + a[x] * (1 - f[x]);
}

ORB_ROW_KERNEL void InterpolateRowsRow(double const* upper, double const* lower, double g, double r,
                                       std::ptrdiff_t count, double* out) {
  double const h = 1 - g;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) out[x] = (upper[x] * h + lower[x] * g) * r;
}

// Four rows at once spare three of four loads and stores of the sums; a column still meets its rows in order.
ORB_ROW_KERNEL void AddSquaredDifferences(WideBlock a, std::ptrdiff_t columns, int rows, std::ptrdiff_t stride,
                                          DifferenceJob const* jobs, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    double const* p = a.samples;
    double const* q = jobs[i].samples;
    double* const sums = jobs[i].sums;
    int y = 0;
    for (; y + 4 <= rows; y += 4) {
      double const* const p1 = p + a.stride;
      double const* const p2 = p1 + a.stride;
      double const* const p3 = p2 + a.stride;
      double const* const q1 = q + stride;
      double const* const q2 = q1 + stride;
      double const* const q3 = q2 + stride;
      ORB_COLUMNS_INDEPENDENT
      for (std::ptrdiff_t x = 0; x < columns; ++x) {
        double const d0 = p[x] - q[x];
        double const d1 = p1[x] - q1[x];
        double const d2 = p2[x] - q2[x];
        double const d3 = p3[x] - q3[x];
        sums[x] = sums[x] + d0 * d0 + d1 * d1 + d2 * d2 + d3 * d3;
      }
      p = p3 + a.stride;
      q = q3 + stride;
    }
    for (; y < rows; ++y) {
      ORB_COLUMNS_INDEPENDENT
      for (std::ptrdiff_t x = 0; x < columns; ++x) {
        double const d = p[x] - q[x];
        sums[x] += d * d;
      }
      p += a.stride;
      q += stride;
    }
  }
}

ORB_ROW_KERNEL double FoldSums(double* sums) {
  for (int half = kTileColumns / 2; half > 0; half /= 2) {
    ORB_COLUMNS_INDEPENDENT
    for (int i = 0; i < half; ++i) sums[i] += sums[i + half];
  }
  return sums[0];
}

}  // namespace orb
