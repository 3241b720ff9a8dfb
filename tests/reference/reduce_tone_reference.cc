#include <tests/reference/reduce_tone_reference.h>

#include <cmath>

namespace orb::test::reference {

void ReduceTone(COrbImage& dst, int levels, COrbImage& src, CRect* rect) {
  int const n = levels < 2 ? 1 : levels >= 256 ? 256 : levels;
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  dst.NormalizeRect(rect, left, top, right, bottom);
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    for (int y = top; y < bottom; ++y) {
      for (int x = left; x < right; ++x) {
        double v = (src.GetPixelGrayRaw(x, y, p) - dst.GetLevelMin(p)) / dst.GetLevelRange(p) * 255.0;
        if (v <= 0.0) v = 0.0;
        if (v >= 255.0) v = 255.0;
        double const w = std::floor(n * v * 0.00390625) / n * 255.0;
        dst.SetPixelGrayRaw(x, y,
                            static_cast<float>(dst.GetLevelRange(p) * w * 0.00392156862745098 + dst.GetLevelMin(p)), p);
      }
    }
  }
}

}  // namespace orb::test::reference
