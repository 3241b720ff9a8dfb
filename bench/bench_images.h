// Images for benchmarks, and the peers' view of them.
#pragma once

#include <cstdint>

#include <orbimg/orbimg.h>

#include <opencv2/core.hpp>

namespace orb::bench {

// A sky of noise around 1000 with a star here and there up to 60000; levels 900 to 1500. The same for the same seed.
inline COrbImage SkyImage(int width, int height, int planes, std::uint32_t seed = 1) {
  COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
  float* samples = image.GetImageAdr(0, 0, 0, 0, nullptr);
  std::uint32_t state = seed * 2654435761u + 1;
  auto const next = [&] { return (state = state * 1664525u + 1013904223u) >> 8; };
  for (std::ptrdiff_t i = 0; i < image.GetPixelCount(); ++i) {
    double const noise = (next() % 4096 + next() % 4096 + next() % 4096) / 3.0 / 20.0;
    samples[i] = static_cast<float>(900.0 + noise + (next() % 5000 == 0 ? next() % 59000 : 0));
  }
  for (int p = 0; p < planes; ++p) image.CImage::SetLevel(p, 900.0, 1500.0);
  return image;
}

// One plane as a matrix over the same memory.
inline cv::Mat MatOver(COrbImage const& image, int plane) {
  return cv::Mat(image.GetHeight(), image.GetWidth(), CV_32F, image.GetImageAdr(0, 0, plane, 0, nullptr));
}

}  // namespace orb::bench
