#include <tests/reference/calculation_reference.h>

namespace orb::test::reference {

void Calculate(COrbImage& dst, double value, int operation, int clamp, COrbImage* src, CRect* rect) {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  dst.NormalizeRect(rect, left, top, right, bottom);
  COrbImage& from = src == nullptr ? dst : *src;
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    for (int y = top; y < bottom; ++y) {
      for (int x = left; x < right; ++x) {
        double v = from.GetPixelGrayRaw(x, y, p);
        if (operation == 0) v = v + value;
        if (operation == 1) v = v - value;
        if (operation == 1 && clamp != 0 && v < 0.0) v = 0.0;
        if (operation == 2) v = v * value;
        if (operation == 3 && value != 0.0) v = v / value;
        dst.SetPixelGrayRaw(x, y, static_cast<float>(v), p);
      }
    }
  }
}

}  // namespace orb::test::reference
