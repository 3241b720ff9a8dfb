#include <tests/reference/wiener_reference.h>

#include <cmath>
#include <vector>

#include <tests/reference/fourier_reference.h>

namespace orb::test::reference {

namespace {

int NextPowerOfTwo(int size) {
  int power = 1;
  while (power < size) power *= 2;
  return power;
}

std::size_t At(int x, int y, int width) {
  return 2 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x));
}

float LargestPower(std::vector<float> const& spectrum) {
  float largest = 0.0f;
  for (std::size_t i = 0; i < spectrum.size(); i += 2) {
    float const power = static_cast<float>(static_cast<double>(spectrum[i]) * spectrum[i] +
                                           static_cast<double>(spectrum[i + 1]) * spectrum[i + 1]);
    if (i == 0 || power > largest) largest = power;
  }
  return largest;
}

}  // namespace

std::vector<float> WienerBlur(int width, int height, double s) {
  std::vector<float> plane(At(0, height, width), 0.0f);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      double const dx = x > width / 2 ? x - width : x;
      double const dy = y > height / 2 ? y - height : y;
      plane[At(x, y, width)] = static_cast<float>(159.15507752443827 * std::exp(-(dx * dx + dy * dy) / (2.0 * s * s)));
    }
  }
  return plane;
}

void Wiener(COrbImage& image, double radius, double noise) {
  int const w = image.GetWidth();
  int const h = image.GetHeight();
  int const width = NextPowerOfTwo(w);
  int const height = NextPowerOfTwo(h);
  std::vector<float> const blur =
      RadixTwoPlane(WienerBlur(width, height, radius * 0.707106781373095), width, height, false);
  double const k = LargestPower(blur) * noise;
  for (int p = 0; p < image.GetPlanes(); ++p) {
    std::vector<float> plane(At(0, height, width), 0.0f);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        int const sx = x < w ? x : w - 1 - (x - w);
        int const sy = y < h ? y : h - 1 - (y - h);
        plane[At(x, y, width)] = image.To256(image.GetPixelGrayRaw(sx, sy, p), p);
      }
    }
    plane = RadixTwoPlane(plane, width, height, false);
    for (std::size_t i = 0; i < plane.size(); i += 2) {
      double const yr = plane[i], yi = plane[i + 1], br = blur[i], bi = blur[i + 1];
      double const d = br * br + bi * bi + k;
      plane[i] = static_cast<float>((yr * br + yi * bi) / d);
      plane[i + 1] = static_cast<float>((yi * br - yr * bi) / d);
    }
    plane = RadixTwoPlane(plane, width, height, true);
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) image.SetPixelGrayRaw(x, y, image.ToRaw(plane[At(x, y, width)], p), p);
    }
  }
}

}  // namespace orb::test::reference
