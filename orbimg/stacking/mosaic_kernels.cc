#include <orbimg/stacking/mosaic_kernels.h>

#include <algorithm>
#include <cmath>

#include <orbimg/core/row_kernel.h>
#include <orbimg/stacking/mosaic_modes_internal.h>

namespace {

using orb::Level;
using orb::Overlap;

struct RawScale {
  double ToRaw(double v) const { return v; }
};

template <typename Value, typename Condition>
[[gnu::always_inline]] inline void TakeWhere(Condition isTaken, Value const* second, std::ptrdiff_t count,
                                             Value* first) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) first[x] = isTaken(first[x], second[x]) ? second[x] : first[x];
}

// The colours of one pixel, as loops hand them to a condition.
struct Color {
  double r;
  double g;
  double b;

  double Brightness() const { return orb::kRedWeight * r + orb::kGreenWeight * g + orb::kBlueWeight * b; }
};

template <typename Condition>
[[gnu::always_inline]] inline void TakeColorWhere(Condition isTaken, double const* const second[3],
                                                  std::ptrdiff_t count, double* const first[3]) {
  double const* const r = second[0];
  double const* const g = second[1];
  double const* const b = second[2];
  double* const toR = first[0];
  double* const toG = first[1];
  double* const toB = first[2];
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    bool const isSecond = isTaken(Color{toR[x], toG[x], toB[x]}, Color{r[x], g[x], b[x]});
    toR[x] = isSecond ? r[x] : toR[x];
    toG[x] = isSecond ? g[x] : toG[x];
    toB[x] = isSecond ? b[x] : toB[x];
  }
}

template <typename Value, typename Scale>
[[gnu::always_inline]] inline void Store(Value const* values, std::ptrdiff_t count, Scale to, float* dst) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) dst[x] = static_cast<float>(to.ToRaw(static_cast<double>(values[x])));
}

template <typename Value, typename Scale>
[[gnu::always_inline]] inline void StoreMean(Value const* first, Value const* second, std::ptrdiff_t count, Scale to,
                                             float* dst) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    double const a = first[x];
    double const b = second[x];
    dst[x] = static_cast<float>(to.ToRaw((a + b) * 0.5));
  }
}

}  // namespace

namespace orb {

ORB_ROW_KERNEL void MergeRow(Overlap const& overlap, float const* second, std::ptrdiff_t count, float* first) {
  double const key = overlap.key[0];
  double const tolerance = overlap.tolerance;
  switch (overlap.mode) {
    case kOverwrite:
      std::copy(second, second + count, first);
      break;
    case kKeyed:
      TakeWhere([key, tolerance](float, float b) { return !(std::fabs(key - b) < tolerance); }, second, count, first);
      break;
    case kLighter:
      TakeWhere([](float a, float b) { return a < b; }, second, count, first);
      break;
    case kDarker:
      TakeWhere([](float a, float b) { return b < a; }, second, count, first);
      break;
    default:
      break;
  }
}

ORB_ROW_KERNEL void MergeColorRow(Overlap const& overlap, double const* const second[3], std::ptrdiff_t count,
                                  double* const first[3]) {
  Color const key{overlap.key[0], overlap.key[1], overlap.key[2]};
  double const tolerance = overlap.tolerance;
  switch (overlap.mode) {
    case kOverwrite:
      for (int p = 0; p < 3; ++p) std::copy(second[p], second[p] + count, first[p]);
      break;
    case kKeyed:
      TakeColorWhere(
          [key, tolerance](Color, Color b) {
            double const distance = std::fabs(key.r - b.r) + std::fabs(key.g - b.g) + std::fabs(key.b - b.b);
            return !(distance < tolerance);
          },
          second, count, first);
      break;
    case kLighter:
      TakeColorWhere([](Color a, Color b) { return a.Brightness() < b.Brightness(); }, second, count, first);
      break;
    case kDarker:
      TakeColorWhere([](Color a, Color b) { return b.Brightness() < a.Brightness(); }, second, count, first);
      break;
    default:
      break;
  }
}

ORB_ROW_KERNEL void StoreRow(float const* values, std::ptrdiff_t count, Level const* to, float* dst) {
  if (to != nullptr) return Store(values, count, *to, dst);
  Store(values, count, RawScale{}, dst);
}

ORB_ROW_KERNEL void StoreRow(double const* values, std::ptrdiff_t count, Level const* to, float* dst) {
  if (to != nullptr) return Store(values, count, *to, dst);
  Store(values, count, RawScale{}, dst);
}

ORB_ROW_KERNEL void StoreMeanRow(float const* first, float const* second, std::ptrdiff_t count, Level const* to,
                                 float* dst) {
  if (to != nullptr) return StoreMean(first, second, count, *to, dst);
  StoreMean(first, second, count, RawScale{}, dst);
}

ORB_ROW_KERNEL void StoreMeanRow(double const* first, double const* second, std::ptrdiff_t count, Level const* to,
                                 float* dst) {
  if (to != nullptr) return StoreMean(first, second, count, *to, dst);
  StoreMean(first, second, count, RawScale{}, dst);
}

}  // namespace orb
