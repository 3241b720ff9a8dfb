#include <tests/reference/levels_reference.h>

namespace orb::test::reference {

void SetLevel(COrbImage& image, int plane, double min, double max) {
  if (!image.IsColor() && plane == -1) plane = 0;
  if (plane != -1) {
    image.CImage::SetLevel(plane, min, max);
    return;
  }
  double const t = (min - image.GetLevelMin(0)) / image.GetLevelRange(0);
  double const u = (max - image.GetLevelMax(0)) / image.GetLevelRange(0);
  double const min1 = image.GetLevelMin(1);
  double const max1 = image.GetLevelMax(1);
  double const range1 = image.GetLevelRange(1);
  double const min2 = image.GetLevelMin(2);
  double const max2 = image.GetLevelMax(2);
  double const range2 = image.GetLevelRange(2);
  image.CImage::SetLevel(0, min, max);
  image.CImage::SetLevel(1, range1 * t + min1, range1 * u + max1);
  image.CImage::SetLevel(2, range2 * t + min2, range2 * u + max2);
}

void CutOutOfLevel(COrbImage& image) {
  for (int p = 0; p < image.GetPlanes(); ++p) {
    for (int y = 0; y < image.GetHeight(); ++y) {
      for (int x = 0; x < image.GetWidth(); ++x) {
        double const raw = image.GetPixelGrayRaw(x, y, p);
        if (raw < image.GetLevelMin(p)) {
          image.SetPixelGrayRaw(x, y, static_cast<float>(image.GetLevelMin(p)), p);
        } else if (raw > image.GetLevelMax(p)) {
          image.SetPixelGrayRaw(x, y, static_cast<float>(image.GetLevelMax(p)), p);
        }
      }
    }
  }
}

}  // namespace orb::test::reference
