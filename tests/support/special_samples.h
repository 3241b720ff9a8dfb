// Samples that arithmetic treats specially, strewn over an image.
#pragma once

#include <limits>

#include <tests/support/test_images.h>

namespace orb::test {

// About one sample in `every` becomes an infinity, not-a-number, a zero of either sign or a number near the float's
// ends.
inline void StrewSpecialSamples(COrbImage& image, Random& random, int every = 6) {
  using Limits = std::numeric_limits<float>;
  float const specials[] = {Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(), 0.0f, -0.0f,
                            Limits::max(),      -Limits::max(),      Limits::denorm_min()};
  std::uniform_int_distribution<int> chance(0, every - 1);
  std::uniform_int_distribution<int> pick(0, 7);
  for (int p = 0; p < image.GetPlanes(); ++p) {
    for (int y = 0; y < image.GetHeight(); ++y) {
      for (int x = 0; x < image.GetWidth(); ++x) {
        if (chance(random) == 0) image.SetPixelGrayRaw(x, y, specials[pick(random)], p);
      }
    }
  }
}

}  // namespace orb::test
