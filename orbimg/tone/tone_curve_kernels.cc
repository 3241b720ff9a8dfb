#include <orbimg/tone/tone_curve_kernels.h>

#include <algorithm>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

// Without a branch, so that a row of them makes vectors.
[[gnu::always_inline]] inline double Through(ToneCurve const& curve, double v) {
  bool const isInside = v >= 0.0 && v <= 255.0;
  int const entry = static_cast<int>(curve.steps * (isInside ? v : 0.0) * kInverse255);
  double const inside = curve.entries[std::min(entry, curve.last)] * 255.0;
  double const below = curve.blackSlope < 0.0 ? curve.blackSlope * v : curve.black;
  double const above = curve.isFlatAtWhite ? curve.white : curve.whiteSlope * (v - curve.white) + curve.white;
  double const outside = v < 0.0 ? below : v > 255.0 ? above : v;
  return isInside ? inside : outside;
}

template <typename Formula>
[[gnu::always_inline]] inline void EachColumn(float const* src, float* dst, std::ptrdiff_t count, Level level,
                                              Formula formula) {
  EachBlock(src, dst, count, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t x = begin; x < end; ++x) {
      dst[x] = static_cast<float>(level.ToRaw(formula(level.To256(src[x]))));
    }
  });
}

}  // namespace

ToneCurve::ToneCurve(float const* curve, int count)
    : entries(curve),
      last(count - 1),
      steps(last),
      black(0),
      blackSlope(0),
      white(0),
      whiteSlope(0),
      isFlatAtWhite(false) {
  if (last < 0) return;
  double const first = entries[0];
  double const second = entries[std::min(1, last)];
  double const end = entries[last];
  double const beforeEnd = entries[std::max(last - 1, 0)];
  if (first == second) black = first * 255.0;
  double const start = (second - first) * steps;
  blackSlope = start < 0.0 ? start : 0.0;
  white = end * 255.0;
  double const finish = (end - beforeEnd) * steps;
  whiteSlope = finish > 0.0 ? finish : 0.0;
  isFlatAtWhite = beforeEnd == end;
}

ORB_ROW_KERNEL void CurveRow(float const* src, float* dst, std::ptrdiff_t count, Level level, ToneCurve const& curve,
                             ToneCurve const& master) {
  if (master.last < 0) return EachColumn(src, dst, count, level, [](double v) { return v; });
  EachColumn(src, dst, count, level, [&](double v) { return Through(master, Through(curve, v)); });
}

ORB_ROW_KERNEL void CurveRow(float const* src, float* dst, std::ptrdiff_t count, Level level, ToneCurve const& master) {
  if (master.last < 0) return EachColumn(src, dst, count, level, [](double v) { return v; });
  EachColumn(src, dst, count, level, [&](double v) { return Through(master, v); });
}

}  // namespace orb
