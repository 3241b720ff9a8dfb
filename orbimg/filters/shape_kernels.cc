#include <orbimg/filters/shape_kernels.h>

#include <cmath>

#include <orbimg/core/row_kernel.h>
#include <orbimg/filters/shape_internal.h>

namespace {

template <int kShape>
[[gnu::always_inline]] inline void LaplacianColumns(double floor, float const* const* rows, std::ptrdiff_t count,
                                                    float* out) {
  float const* const above = rows[0];
  float const* const centre = rows[1];
  float const* const below = rows[2];
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    double const v = orb::Laplacian{kShape}.Apply(above + x, centre + x, below + x, -1, 1);
    out[x] = static_cast<float>(std::fabs(v) + floor);
  }
}

}  // namespace

namespace orb {

ORB_ROW_KERNEL void LaplacianRow(int shape, double floor, float const* const* rows, std::ptrdiff_t count, float* out) {
  switch (shape) {
    case kCross:
      return LaplacianColumns<kCross>(floor, rows, count, out);
    case kSquare:
      return LaplacianColumns<kSquare>(floor, rows, count, out);
    case kRound:
      return LaplacianColumns<kRound>(floor, rows, count, out);
    default:
      return LaplacianColumns<-1>(floor, rows, count, out);
  }
}

}  // namespace orb
