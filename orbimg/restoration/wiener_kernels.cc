#include <orbimg/restoration/wiener_kernels.h>

#include <algorithm>
#include <cmath>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

[[gnu::always_inline]] inline float PowerOf(float const* value) {
  double const re = value[0];
  double const im = value[1];
  return static_cast<float>(re * re + im * im);
}

// Where the exponent is below this, the product with the peak is 0 as a float, and exp need not be asked.
constexpr double kVanishing = -120.0;

}  // namespace

bool FillGaussRow(double s, double y, std::ptrdiff_t width, float* row) {
  constexpr double kPeak = 159.15507752443827;
  if (-(y * y) / (2.0 * s * s) < kVanishing) return false;
  for (std::ptrdiff_t x = 0; x <= width / 2; ++x) {
    double const dx = static_cast<double>(x);
    double const exponent = -(dx * dx + y * y) / (2.0 * s * s);
    float const value = exponent < kVanishing ? 0.0f : static_cast<float>(kPeak * std::exp(exponent));
    row[x] = value;
    if (x > 0) row[width - x] = value;
  }
  return true;
}

// The smallest and the largest of many values do not hang on their order; a first value that is not a number stays in
// every lane.
ORB_ROW_KERNEL PowerRange FindPowerRange(float const* values, std::ptrdiff_t count) {
  constexpr std::ptrdiff_t kBlock = 256;
  constexpr std::ptrdiff_t kLanes = 16;
  float least[kLanes];
  float most[kLanes];
  float powers[kBlock];
  for (std::ptrdiff_t k = 0; k < kLanes; ++k) least[k] = most[k] = PowerOf(values);
  for (std::ptrdiff_t begin = 0; begin < count; begin += kBlock) {
    std::ptrdiff_t const end = std::min(kBlock, count - begin);
    for (std::ptrdiff_t i = 0; i < end; ++i) powers[i] = PowerOf(values + 2 * (begin + i));
    for (std::ptrdiff_t i = end; i % kLanes != 0; ++i) powers[i] = powers[end - 1];
    for (std::ptrdiff_t i = 0; i < end; i += kLanes) {
      for (std::ptrdiff_t k = 0; k < kLanes; ++k) {
        least[k] = powers[i + k] < least[k] ? powers[i + k] : least[k];
        most[k] = powers[i + k] > most[k] ? powers[i + k] : most[k];
      }
    }
  }
  PowerRange range{least[0], most[0]};
  for (std::ptrdiff_t k = 1; k < kLanes; ++k) {
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

ORB_ROW_KERNEL void LoadRealRow(float const* samples, std::ptrdiff_t count, Level level, float* row) {
  for (std::ptrdiff_t x = 0; x < count; ++x) row[x] = static_cast<float>(level.To256(samples[x]));
}

ORB_ROW_KERNEL void StoreRealRow(float const* row, std::ptrdiff_t count, Level level, float* samples) {
  for (std::ptrdiff_t x = 0; x < count; ++x) samples[x] = static_cast<float>(level.ToRaw(row[x]));
}

ORB_ROW_KERNEL void StoreWienerRow(float const* row, std::ptrdiff_t count, Level level, float* samples) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) samples[x] = static_cast<float>(level.ToRaw(row[2 * x]));
}

}  // namespace orb
