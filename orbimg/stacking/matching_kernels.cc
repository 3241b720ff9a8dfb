#include <orbimg/stacking/matching_kernels.h>

#include <algorithm>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

template <typename Sample>
[[gnu::always_inline]] inline void Scale(float const* in, std::ptrdiff_t inStride, std::ptrdiff_t columns, int rows,
                                         double r, Sample* out, std::ptrdiff_t outStride) {
  auto const factor = static_cast<Sample>(r);
  for (int y = 0; y < rows; ++y) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t x = 0; x < columns; ++x) out[x] = in[x] * factor;
    in += inStride;
    out += outStride;
  }
}

// A vector that lies anywhere, on machines with shorter ones several of them.
template <typename Sample>
struct VectorOf {
  static constexpr int kBytes = 64;
  static constexpr int kLanes = kBytes / static_cast<int>(sizeof(Sample));
  typedef Sample Type __attribute__((vector_size(kBytes), aligned(alignof(Sample)), may_alias));
};

// Four vectors at once, so that their sums stay in registers from the first row to the last.
template <typename Sample>
[[gnu::always_inline]] inline void AddFewColumns(Sample const* p, std::ptrdiff_t pStride, Sample const* q,
                                                 std::ptrdiff_t qStride, int rows, Sample* sums) {
  using Vector = typename VectorOf<Sample>::Type;
  auto* const s = reinterpret_cast<Vector*>(sums);
  Vector s0 = s[0];
  Vector s1 = s[1];
  Vector s2 = s[2];
  Vector s3 = s[3];
  for (int y = 0; y < rows; ++y) {
    auto const* const a = reinterpret_cast<Vector const*>(p);
    auto const* const b = reinterpret_cast<Vector const*>(q);
    Vector const d0 = a[0] - b[0];
    Vector const d1 = a[1] - b[1];
    Vector const d2 = a[2] - b[2];
    Vector const d3 = a[3] - b[3];
    s0 += d0 * d0;
    s1 += d1 * d1;
    s2 += d2 * d2;
    s3 += d3 * d3;
    p += pStride;
    q += qStride;
  }
  s[0] = s0;
  s[1] = s1;
  s[2] = s2;
  s[3] = s3;
}

// A column meets its rows in order, whichever loop it is in.
template <typename Sample>
[[gnu::always_inline]] inline void AddDifferences(Block<Sample> a, std::ptrdiff_t columns, int rows,
                                                  std::ptrdiff_t stride, DifferenceJob<Sample> const* jobs,
                                                  std::size_t count) {
  constexpr std::ptrdiff_t kFew = 4 * VectorOf<Sample>::kLanes;
  for (std::size_t i = 0; i < count; ++i) {
    std::ptrdiff_t begin = 0;
    for (; begin + kFew <= columns; begin += kFew) {
      AddFewColumns(a.samples + begin, a.stride, jobs[i].samples + begin, stride, rows, jobs[i].sums + begin);
    }
    if (begin == columns) continue;
    Sample const* p = a.samples;
    Sample const* q = jobs[i].samples;
    Sample* const sums = jobs[i].sums;
    for (int y = 0; y < rows; ++y) {
      ORB_COLUMNS_INDEPENDENT
      for (std::ptrdiff_t x = begin; x < columns; ++x) {
        Sample const d = p[x] - q[x];
        sums[x] += d * d;
      }
      p += a.stride;
      q += stride;
    }
  }
}

}  // namespace

ORB_ROW_KERNEL void ScaleBlock(float const* in, std::ptrdiff_t inStride, std::ptrdiff_t columns, int rows, double r,
                               double* out, std::ptrdiff_t outStride) {
  Scale(in, inStride, columns, rows, r, out, outStride);
}

ORB_ROW_KERNEL void ScaleBlock(float const* in, std::ptrdiff_t inStride, std::ptrdiff_t columns, int rows, double r,
                               float* out, std::ptrdiff_t outStride) {
  Scale(in, inStride, columns, rows, r, out, outStride);
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

ORB_ROW_KERNEL void AddSquaredDifferences(Block<double> a, std::ptrdiff_t columns, int rows, std::ptrdiff_t stride,
                                          DifferenceJob<double> const* jobs, std::size_t count) {
  AddDifferences(a, columns, rows, stride, jobs, count);
}

ORB_ROW_KERNEL void AddSquaredDifferences(Block<float> a, std::ptrdiff_t columns, int rows, std::ptrdiff_t stride,
                                          DifferenceJob<float> const* jobs, std::size_t count) {
  AddDifferences(a, columns, rows, stride, jobs, count);
}

ORB_ROW_KERNEL double FoldSums(double* sums) {
  for (int half = kTileColumns / 2; half > 0; half /= 2) {
    ORB_COLUMNS_INDEPENDENT
    for (int i = 0; i < half; ++i) sums[i] += sums[i + half];
  }
  return sums[0];
}

double FoldSums(float* sums) {
  double wide[kTileColumns];
  std::copy_n(sums, kTileColumns, wide);
  return FoldSums(wide);
}

ORB_ROW_KERNEL void AddSquaresRow(float const* in, std::ptrdiff_t count, double* sums) {
  for (std::ptrdiff_t begin = 0; begin < count; begin += kTileColumns) {
    std::ptrdiff_t const columns = std::min<std::ptrdiff_t>(kTileColumns, count - begin);
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t x = 0; x < columns; ++x) {
      double const v = in[begin + x];
      sums[x] += v * v;
    }
  }
}

}  // namespace orb
