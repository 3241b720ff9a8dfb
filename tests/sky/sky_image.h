// A sky in whole counts, as tests of its tiles need it: noise on a level, and stars where asked for.
#pragma once

#include <cmath>

#include <tests/support/test_images.h>

namespace orb::test {

// `level` with noise of up to `spread` counts to either side, in every plane.
inline COrbImage NoisySky(Random& random, int width, int height, int planes, int level = 1000, int spread = 3) {
  COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
  std::uniform_int_distribution<int> noise(-spread, spread);
  std::vector<float> samples(static_cast<std::size_t>(image.GetPixelCount()));
  for (float& v : samples) v = static_cast<float>(level + noise(random));
  SetSamples(image, samples);
  return image;
}

inline void AddStar(COrbImage& image, int x, int y, float peak = 5000.0f) {
  image.SetPixelGrayRaw(x, y, image.GetPixelGrayRaw(x, y, 0) + peak, 0);
}

inline COrbImage ConstantSky(int width, int height, int planes, float value) {
  COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, std::vector<float>(static_cast<std::size_t>(image.GetPixelCount()), value));
  return image;
}

}  // namespace orb::test
