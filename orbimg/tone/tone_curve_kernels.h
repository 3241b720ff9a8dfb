// Rows through tone curves.
#pragma once

#include <cstddef>

#include <orbimg/core/level.h>

namespace orb {

// What CImgToneCurve::CalcToneCurve needs to know of a curve, found once.
struct ToneCurve {
  ToneCurve(float const* curve, int count);

  float const* entries;
  int last;           // of the entries; -1: there are none, and values stay
  double steps;       // `last` as a factor
  double black;       // below 0 where the curve does not fall
  double blackSlope;  // 0 where it does not fall
  double white;
  double whiteSlope;
  bool isFlatAtWhite;
};

// d = master(curve((s - min) / range * 255.0)), stored by the same level. `dst` may be `src`.
void CurveRow(float const* src, float* dst, std::ptrdiff_t count, Level level, ToneCurve const& curve,
              ToneCurve const& master);
void CurveRow(float const* src, float* dst, std::ptrdiff_t count, Level level, ToneCurve const& master);

}  // namespace orb
