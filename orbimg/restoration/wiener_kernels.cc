#include <orbimg/restoration/wiener_kernels.h>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

[[gnu::always_inline]] inline float PowerOf(float const* value) {
  double const re = value[0];
  double const im = value[1];
  return static_cast<float>(re * re + im * im);
}

}  // namespace

// The smallest and the largest of many values do not hang on their order; a first value that is not a number stays in
// every lane.
ORB_ROW_KERNEL PowerRange FindPowerRange(float const* values, std::ptrdiff_t count) {
  constexpr int kLanes = 16;
  float least[kLanes];
  float most[kLanes];
  for (int k = 0; k < kLanes; ++k) least[k] = most[k] = PowerOf(values);
  std::ptrdiff_t i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    for (int k = 0; k < kLanes; ++k) {
      float const power = PowerOf(values + 2 * (i + k));
      least[k] = power < least[k] ? power : least[k];
      most[k] = power > most[k] ? power : most[k];
    }
  }
  for (; i < count; ++i) {
    float const power = PowerOf(values + 2 * i);
    if (power < least[0]) least[0] = power;
    if (power > most[0]) most[0] = power;
  }
  PowerRange range{least[0], most[0]};
  for (int k = 1; k < kLanes; ++k) {
    if (least[k] < range.least) range.least = least[k];
    if (most[k] > range.most) range.most = most[k];
  }
  return range;
}

ORB_ROW_KERNEL void WienerDivideRow(float* y, float const* b, std::ptrdiff_t count, double k) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    double const yRe = y[2 * x];
    double const yIm = y[2 * x + 1];
    double const bRe = b[2 * x];
    double const bIm = b[2 * x + 1];
    double const d = bRe * bRe + bIm * bIm + k;
    y[2 * x] = static_cast<float>((yRe * bRe + yIm * bIm) / d);
    y[2 * x + 1] = static_cast<float>((yIm * bRe - yRe * bIm) / d);
  }
}

ORB_ROW_KERNEL void LoadWienerRow(float const* samples, std::ptrdiff_t count, Level level, float* row) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    row[2 * x] = static_cast<float>(level.To256(samples[x]));
    row[2 * x + 1] = 0.0f;
  }
}

ORB_ROW_KERNEL void StoreWienerRow(float const* row, std::ptrdiff_t count, Level level, float* samples) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) samples[x] = static_cast<float>(level.ToRaw(row[2 * x]));
}

}  // namespace orb
