#include <tests/reference/bright_reference.h>

namespace orb::test::reference {

void Bright(COrbImage& dst, double brightness, double contrast, double pivot, COrbImage& src, CRect* rect) {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  dst.NormalizeRect(rect, left, top, right, bottom);
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    for (int y = top; y < bottom; ++y) {
      for (int x = left; x < right; ++x) {
        double const lv = dst.GetLevelMin(0);
        double const rg = dst.GetLevelRange(0);
        double const v = (src.GetPixelGrayRaw(x, y, p) - lv) / rg * 255.0;
        double const w = v + (v - pivot) * contrast * 0.00390625 + brightness;
        dst.SetPixelGrayRaw(x, y, static_cast<float>(rg * w * 0.00392156862745098 + lv), p);
      }
    }
  }
}

}  // namespace orb::test::reference
