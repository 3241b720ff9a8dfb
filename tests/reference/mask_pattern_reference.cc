#include <tests/reference/mask_pattern_reference.h>

#include <cmath>

#include <tests/reference/sampler_reference.h>

namespace orb::test::reference {

void MakeMask(COrbImage& image, double threshold) {
  for (int p = 0; p < image.GetPlanes(); ++p) {
    for (int y = 0; y < image.GetHeight(); ++y) {
      for (int x = 0; x < image.GetWidth(); ++x) {
        double const v = image.GetPixelGrayRaw(x, y, p);
        image.SetPixelGrayRaw(x, y, v <= threshold ? 1.0f : 0.0f, p);
      }
    }
  }
}

void BlankThroughMask(COrbImage& image, COrbImage& mask, double shiftX, double shiftY, double angle) {
  double const s = std::sin(angle * 0.017453292519943295);
  double const c = std::cos(angle * 0.017453292519943295);
  for (int p = 0; p < image.GetPlanes(); ++p) {
    for (int y = 0; y < image.GetHeight(); ++y) {
      for (int x = 0; x < image.GetWidth(); ++x) {
        Sampled const m = PixelGrayRaw(mask, x, y, Place{shiftX, shiftY, s, c, 1.0}, 0, 0.0, false);
        if (static_cast<float>(m.value[0]) == 0.0f) image.SetPixelGrayRaw(x, y, 0.0f, p);
      }
    }
  }
}

}  // namespace orb::test::reference
