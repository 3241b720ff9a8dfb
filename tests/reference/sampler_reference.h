// Plain transcription of the transformed sampler, one value at a time.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

struct Place {
  double dx;
  double dy;
  double sinA;
  double cosA;
  double scale;
};

struct Sampled {
  double value[3];  // one value: in [0]
  bool outside;
  double sx;
  double sy;
};

// Unrounded; the single-value forms of the library round value[0] to float.
Sampled PixelGray256f(COrbImage& image, int x, int y, Place const& place, int plane, double outside, bool nearest);
Sampled PixelGrayRaw(COrbImage& image, int x, int y, Place const& place, int plane, double outside, bool nearest);
Sampled PixelRgb256f(COrbImage& image, int x, int y, Place const& place, double outside);
Sampled PixelRgbRaw(COrbImage& image, int x, int y, Place const& place, double outside);

}  // namespace orb::test::reference
