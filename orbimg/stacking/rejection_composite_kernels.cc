#include <orbimg/stacking/rejection_composite_kernels.h>

#include <algorithm>

#include <orbimg/core/row_kernel.h>

namespace {

double Larger(double largest, double v) { return v > largest ? v : largest; }

}  // namespace

namespace orb {

ORB_ROW_KERNEL void LowerRow(double const* a, float const* second, double ratio, std::ptrdiff_t count, double* result) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const bs = second[i] * ratio;
    result[i] = a[i] >= bs ? bs : a[i];
  }
}

ORB_ROW_KERNEL void ConvertRow(float const* samples, Level level, bool is256, std::ptrdiff_t count, double* values) {
  if (is256) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t i = 0; i < count; ++i) values[i] = level.To256(samples[i]);
  } else {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t i = 0; i < count; ++i) values[i] = samples[i];
  }
}

ORB_ROW_KERNEL void RaiseRow(double const* values, std::ptrdiff_t count, double* largest) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) largest[i] = Larger(largest[i], values[i]);
}

ORB_ROW_KERNEL void NearestColumnsRow(double const* sx, int x, int tapX, int last, std::ptrdiff_t count, int* columns) {
  int const n = static_cast<int>(count);
  ORB_COLUMNS_INDEPENDENT
  for (int i = 0; i < n; ++i) {
    double const pixel = x + i;
    columns[i] = std::clamp(static_cast<int>(pixel + tapX + sx[i] - pixel + 0.5), 0, last);
  }
}

ORB_ROW_KERNEL void NearestRowsRow(double const* sy, int y, int tapY, int last, int width, std::ptrdiff_t count,
                                   std::ptrdiff_t* rowOffsets) {
  double const pixel = y;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    int const row = std::clamp(static_cast<int>(pixel + tapY + sy[i] - pixel + 0.5), 0, last);
    rowOffsets[i] = static_cast<std::ptrdiff_t>(row) * width;
  }
}

ORB_ROW_KERNEL void RaiseToNearestRow(float const* plane, std::ptrdiff_t const* rowOffsets, int const* columns,
                                      Level level, bool is256, std::ptrdiff_t count, double* largest) {
  if (is256) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t i = 0; i < count; ++i) {
      largest[i] = Larger(largest[i], static_cast<float>(level.To256(plane[rowOffsets[i] + columns[i]])));
    }
  } else {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t i = 0; i < count; ++i) {
      largest[i] = Larger(largest[i], plane[rowOffsets[i] + columns[i]]);
    }
  }
}

}  // namespace orb
