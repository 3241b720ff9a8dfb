#include <tests/reference/sampler_reference.h>

#include <tests/reference/pixels_reference.h>

namespace orb::test::reference {

namespace {

void FindPosition(COrbImage& image, int x, int y, Place const& place, double& sx, double& sy) {
  double const cx = image.GetStdCtr().fx;
  double const cy = image.GetStdCtr().fy;
  if (place.cosA == 1.0 && place.sinA == 0.0 && place.scale == 1.0) {
    sx = x - place.dx;
    sy = y - place.dy;
    return;
  }
  if (place.cosA == 1.0 && place.sinA == 0.0) {
    sx = (x - cx - place.dx) * place.scale + cx;
    sy = (y - cy - place.dy) * place.scale + cy;
    return;
  }
  double const p = x - cx - place.dx;
  double const q = cy - y + place.dy;
  sx = (p * place.cosA - q * place.sinA) * place.scale + cx;
  sy = cy - (p * place.sinA + q * place.cosA) * place.scale;
}

bool IsInside(COrbImage& image, double sx, double sy) {
  return 0 <= sx && sx < image.GetWidth() && 0 <= sy && sy < image.GetHeight();
}

// Kept away from the conversion: no integer holds it.
bool IsBeyondIntegers(double v) { return !(v > -2147483648.0 && v < 2147483647.0); }

Sampled OutsideResult(double outside, double sx, double sy) { return {{outside, outside, outside}, true, sx, sy}; }

double NearestSample(COrbImage& image, double sx, double sy, int plane) {
  return image.GetPixelGrayRaw(static_cast<int>(sx + 0.5), static_cast<int>(sy + 0.5), plane);
}

}  // namespace

Sampled PixelGray256f(COrbImage& image, int x, int y, Place const& place, int plane, double outside, bool nearest) {
  double sx;
  double sy;
  FindPosition(image, x, y, place, sx, sy);
  if (!IsInside(image, sx, sy)) return OutsideResult(outside, sx, sy);
  auto const value = [&](int p) {
    return To256(image, nearest ? NearestSample(image, sx, sy, p) : Bilinear(image, sx, sy, p), p);
  };
  if (!image.IsColor()) return {{value(0), 0, 0}, false, sx, sy};
  if (plane >= 0) return {{value(plane), 0, 0}, false, sx, sy};
  return {{0.114 * value(2) + 0.587 * value(1) + 0.299 * value(0), 0, 0}, false, sx, sy};
}

Sampled PixelGrayRaw(COrbImage& image, int x, int y, Place const& place, int plane, double outside, bool nearest) {
  double sx;
  double sy;
  FindPosition(image, x, y, place, sx, sy);
  if (nearest) {
    if (IsBeyondIntegers(sx) || IsBeyondIntegers(sy)) return OutsideResult(outside, sx, sy);
    int const i = static_cast<int>(sx + 0.5);
    int const j = static_cast<int>(sy + 0.5);
    if (i < 0 || i >= image.GetWidth() || j < 0 || j >= image.GetHeight()) return OutsideResult(outside, sx, sy);
  } else if (!IsInside(image, sx, sy)) {
    return OutsideResult(outside, sx, sy);
  }
  auto const value = [&](int p) { return nearest ? NearestSample(image, sx, sy, p) : Bilinear(image, sx, sy, p); };
  if (!image.IsColor()) return {{value(0), 0, 0}, false, sx, sy};
  if (plane >= 0) return {{value(plane), 0, 0}, false, sx, sy};
  return {{0.114 * value(2) + 0.587 * value(1) + 0.299 * value(0), 0, 0}, false, sx, sy};
}

Sampled PixelRgb256f(COrbImage& image, int x, int y, Place const& place, double outside) {
  Sampled sampled = PixelRgbRaw(image, x, y, place, outside);
  if (sampled.outside) return sampled;
  for (int p = 0; p < 3; ++p) sampled.value[p] = To256(image, sampled.value[p], image.IsColor() ? p : 0);
  return sampled;
}

Sampled PixelRgbRaw(COrbImage& image, int x, int y, Place const& place, double outside) {
  double sx;
  double sy;
  FindPosition(image, x, y, place, sx, sy);
  if (!IsInside(image, sx, sy)) return OutsideResult(outside, sx, sy);
  Sampled sampled{{0, 0, 0}, false, sx, sy};
  for (int p = 0; p < 3; ++p) sampled.value[p] = Bilinear(image, sx, sy, image.IsColor() ? p : 0);
  return sampled;
}

}  // namespace orb::test::reference
