#include <tests/reference/tone_curve_reference.h>

#include <cmath>

namespace orb::test::reference {

double ToneCurveAt(float const* curve, int count, double value) {
  if (std::isnan(value)) return value;
  if (value < 0.0) {
    double const a = curve[0];
    double const b = curve[1];
    if (a == b) return a * 255.0;
    double const s = (b - a) * (count - 1);
    return s < 0.0 ? s * value : 0.0;
  }
  if (value > 255.0) {
    double const a = curve[count - 2];
    double const b = curve[count - 1];
    double const bigB = b * 255.0;
    if (a == b) return bigB;
    double s = (b - a) * (count - 1);
    if (!(s > 0.0)) s = 0.0;
    return s * (value - bigB) + bigB;
  }
  double const t = (count - 1) * value * 0.00392156862745098;
  int const i = static_cast<int>(t);
  double const f = t - i;
  if (i >= count) return curve[count - 1] * 255.0;
  return (f + (1 - f)) * curve[i] * 255.0;
}

void ApplyToneCurves(COrbImage& dst, float** curves, int count, COrbImage& src, CRect* rect) {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  dst.NormalizeRect(rect, left, top, right, bottom);
  for (int p = 0; p < (dst.IsColor() ? dst.GetPlanes() : 1); ++p) {
    for (int y = top; y < bottom; ++y) {
      for (int x = left; x < right; ++x) {
        double const v = (src.GetPixelGrayRaw(x, y, p) - dst.GetLevelMin(p)) / dst.GetLevelRange(p) * 255.0;
        double const u = dst.IsColor() ? ToneCurveAt(curves[1 + p], count, v) : v;
        double const w = ToneCurveAt(curves[0], count, u);
        dst.SetPixelGrayRaw(x, y,
                            static_cast<float>(dst.GetLevelRange(p) * w * 0.00392156862745098 + dst.GetLevelMin(p)), p);
      }
    }
  }
}

}  // namespace orb::test::reference
