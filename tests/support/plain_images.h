// Images with levels 0 to 255 and given samples.
#pragma once

#include <vector>

#include <orbimg/orbimg.h>
#include <tests/support/test_images.h>

namespace orb::test {

inline COrbImage Empty(int width, int height, int planes) {
  return COrbImage(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
}

// Of one plane.
inline COrbImage ImageOf(int width, int height, std::vector<float> const& samples) {
  COrbImage image = Empty(width, height, 1);
  SetSamples(image, samples);
  return image;
}

inline COrbImage Constant(int width, int height, float value) {
  return ImageOf(width, height,
                 std::vector<float>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), value));
}

// Each plane of one value.
inline COrbImage Constant(int width, int height, std::vector<float> const& color) {
  COrbImage image = Empty(width, height, static_cast<int>(color.size()));
  std::vector<float> samples;
  for (float const value : color) samples.insert(samples.end(), static_cast<std::size_t>(width * height), value);
  SetSamples(image, samples);
  return image;
}

}  // namespace orb::test
