#include <tests/reference/pixels_reference.h>

namespace orb::test::reference {

double To256(COrbImage const& image, double raw, int plane) {
  return (raw - image.GetLevelMin(plane)) / image.GetLevelRange(plane) * 255.0;
}

double ToRaw(COrbImage const& image, double v, int plane) {
  return image.GetLevelRange(plane) * v * 0.00392156862745098 + image.GetLevelMin(plane);
}

unsigned char ToByte(COrbImage const& image, double raw, int plane) {
  if (image.GetLevelMin(plane) >= raw) return 0;
  if (image.GetLevelMax(plane) <= raw) return 255;
  return static_cast<unsigned char>(static_cast<int>(To256(image, raw, plane)));
}

unsigned char WrapToByte(double v) {
  int const whole = static_cast<int>(v);
  return static_cast<unsigned char>(static_cast<unsigned>(whole) & 0xffu);
}

double Sample(COrbImage& image, int x, int y, int plane) { return image.GetPixelGrayRaw(x, y, plane); }

double Bilinear(COrbImage& image, double x, double y, int plane) {
  int i = 0;
  int j = 0;
  if (x >= image.GetWidth() - 1) {
    x = image.GetWidth() - 1;
    i = image.GetWidth() - 2;
  } else {
    i = static_cast<int>(x);
  }
  if (y >= image.GetHeight() - 1) {
    y = image.GetHeight() - 1;
    j = image.GetHeight() - 2;
  } else {
    j = static_cast<int>(y);
  }
  if (i == x && j == y) return Sample(image, i, j, plane);
  double const a0 = Sample(image, i, j, plane);
  double const a1 = Sample(image, i + 1, j, plane);
  double const b0 = Sample(image, i, j + 1, plane);
  double const b1 = Sample(image, i + 1, j + 1, plane);
  double const f = x - i;
  double const g = y - j;
  return (a1 * f + a0 * (1 - f)) * (1 - g) + (b1 * f + b0 * (1 - f)) * g;
}

double Bright256(COrbImage& image, int x, int y) {
  if (!image.IsColor()) return To256(image, Sample(image, x, y, 0), 0);
  double const r = To256(image, Sample(image, x, y, 0), 0);
  double const g = To256(image, Sample(image, x, y, 1), 1);
  double const b = To256(image, Sample(image, x, y, 2), 2);
  return 0.114 * b + 0.587 * g + 0.299 * r;
}

}  // namespace orb::test::reference
