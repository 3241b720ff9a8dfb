#include <tests/reference/planes_reference.h>

namespace orb::test::reference {

void FillColor(COrbImage& color, COrbImage& src) {
  for (int p = 0; p < 3; ++p) {
    for (int y = 0; y < color.GetHeight(); ++y) {
      for (int x = 0; x < color.GetWidth(); ++x) {
        color.SetPixelGrayRaw(x, y, src.GetPixelGrayRaw(x, y, src.GetDimension() < 3 ? 0 : p), p);
      }
    }
  }
}

void FillGray(COrbImage& gray, COrbImage& src) {
  for (int y = 0; y < gray.GetHeight(); ++y) {
    for (int x = 0; x < gray.GetWidth(); ++x) {
      double const r = src.GetPixelGrayRaw(x, y, 0);
      double const g = src.GetPixelGrayRaw(x, y, 1);
      double const b = src.GetPixelGrayRaw(x, y, 2);
      double const v = (g - src.GetLevelMin(1)) / src.GetLevelRange(1) * 255.0 * 0.587 +
                       (b - src.GetLevelMin(2)) / src.GetLevelRange(2) * 255.0 * 0.114 +
                       (r - src.GetLevelMin(0)) / src.GetLevelRange(0) * 255.0 * 0.299;
      double const raw = gray.GetLevelRange(0) * v * 0.00392156862745098 + gray.GetLevelMin(0);
      gray.SetPixelGrayRaw(x, y, static_cast<float>(raw), 0);
    }
  }
}

void LiftUp(COrbImage& image, int rows) {
  if (rows == 0) return;
  for (int p = 0; p < image.GetPlanes(); ++p) {
    for (int y = 0; y < image.GetHeight(); ++y) {
      if (y - rows < 0) continue;
      for (int x = 0; x < image.GetWidth(); ++x) {
        image.SetPixelGrayRaw(x, y - rows, image.GetPixelGrayRaw(x, y, p), p);
      }
    }
  }
}

}  // namespace orb::test::reference
