#include <tests/reference/calibration_reference.h>

namespace orb::test::reference {

void FlatClbrtn(COrbImage& image, COrbImage& flat, float a) {
  for (int p = 0; p < image.GetPlanes(); ++p) {
    for (int y = 0; y < image.GetHeight(); ++y) {
      for (int x = 0; x < image.GetWidth(); ++x) {
        float const f = flat.GetPixelGrayRaw(x, y, flat.IsColor() ? p : 0);
        if (!(f > 0.0f)) continue;
        double const raw = image.GetPixelGrayRaw(x, y, p);
        image.SetPixelGrayRaw(x, y, static_cast<float>(raw * static_cast<double>(a) / static_cast<double>(f)), p);
      }
    }
  }
}

void DarkClbrtn(COrbImage& image, COrbImage& dark) {
  for (int p = 0; p < image.GetPlanes(); ++p) {
    for (int y = 0; y < image.GetHeight(); ++y) {
      for (int x = 0; x < image.GetWidth(); ++x) {
        double const raw = image.GetPixelGrayRaw(x, y, p);
        double const d = dark.GetPixelGrayRaw(x, y, dark.IsColor() ? p : 0);
        double const t = raw - d;
        if (t > 0.0) {
          image.SetPixelGrayRaw(x, y, static_cast<float>(t), p);
        } else {
          image.SetPixelGrayRaw(x, y, 0.0f, p);
        }
      }
    }
  }
}

}  // namespace orb::test::reference
