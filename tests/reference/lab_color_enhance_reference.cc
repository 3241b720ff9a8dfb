#include <tests/reference/lab_color_enhance_reference.h>

#include <tests/reference/color_reference.h>

namespace orb::test::reference {

void LabColorEnhance(COrbImage& dst, COrbImage& source, LabGains const& gains, CRect* rect) {
  int left;
  int top;
  int right;
  int bottom;
  dst.NormalizeRect(rect, left, top, right, bottom);
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) {
      double const l = source.GetPixelGrayRaw(x, y, 0);
      double a = source.GetPixelGrayRaw(x, y, 1);
      double b = source.GetPixelGrayRaw(x, y, 2);
      a = a >= 0 ? a * gains.aPlus : a * gains.aMinus;
      b = b >= 0 ? b * gains.bPlus : b * gains.bMinus;
      Color const color = LabToRgb(l, a, b);
      double const c[3] = {color.r, color.g, color.b};
      for (int p = 0; p < 3; ++p) {
        double const raw = c[p] * 255.0 * dst.GetLevelRange(p) * 0.00392156862745098 + dst.GetLevelMin(p);
        dst.SetPixelGrayRaw(x, y, static_cast<float>(raw), p);
      }
    }
  }
}

}  // namespace orb::test::reference
