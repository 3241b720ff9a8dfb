#include <orbimg/stacking/rejection_composite_kernels.h>

#include <algorithm>

#include <orbimg/core/row_kernel.h>

namespace {

template <typename Convert>
[[gnu::always_inline]] inline void RaiseToFirst(float const* samples, std::ptrdiff_t count, double* largest,
                                                Convert convert) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const v = convert(samples[i]);
    largest[i] = v > largest[i] ? v : largest[i];
  }
}

template <typename Convert>
[[gnu::always_inline]] inline void RaiseToSecond(orb::WindowPlane const& plane, double const* sx, double const* sy,
                                                 int x, int y, int tapX, int tapY, std::ptrdiff_t count,
                                                 double* largest, Convert convert) {
  float const* const samples = plane.samples;
  std::ptrdiff_t const width = plane.width;
  int const lastX = plane.width - 1;
  int const lastY = plane.height - 1;
  double const yy = y + tapY;
  double const xx = x + tapX;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const column = static_cast<double>(i);
    int const ix = static_cast<int>(xx + column + sx[i] - (x + column) + 0.5);
    int const iy = static_cast<int>(yy + sy[i] - y + 0.5);
    double const v = convert(samples[std::clamp(iy, 0, lastY) * width + std::clamp(ix, 0, lastX)]);
    largest[i] = v > largest[i] ? v : largest[i];
  }
}

}  // namespace

namespace orb {

ORB_ROW_KERNEL void LowerRow(double const* a, float const* second, double ratio, std::ptrdiff_t count, double* result) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const bs = second[i] * ratio;
    result[i] = a[i] >= bs ? bs : a[i];
  }
}

ORB_ROW_KERNEL void RaiseToFirstRow(float const* samples, Level level, bool is256, std::ptrdiff_t count,
                                    double* largest) {
  if (is256) {
    RaiseToFirst(samples, count, largest, [level](float raw) { return level.To256(raw); });
  } else {
    RaiseToFirst(samples, count, largest, [](float raw) { return static_cast<double>(raw); });
  }
}

ORB_ROW_KERNEL void RaiseToSecondRow(WindowPlane const& plane, double const* sx, double const* sy, int x, int y,
                                     int tapX, int tapY, std::ptrdiff_t count, double* largest) {
  if (plane.is256) {
    Level const level = plane.level;
    RaiseToSecond(plane, sx, sy, x, y, tapX, tapY, count, largest,
                  [level](float raw) { return static_cast<double>(static_cast<float>(level.To256(raw))); });
  } else {
    RaiseToSecond(plane, sx, sy, x, y, tapX, tapY, count, largest, [](float raw) { return static_cast<double>(raw); });
  }
}

}  // namespace orb
