// Transformed sampling: what this image shows at a pixel of another frame. And the plain rectangle copy.
#include <algorithm>
#include <cmath>

#include <orbimg/core/bilinear_internal.h>
#include <orbimg/core/brightness_internal.h>
#include <orbimg/core/level.h>
#include <orbimg/core/orb_image.h>
#include <orbimg/core/transform_internal.h>

namespace {

struct OutParameters {
  int* isOutside;
  double* srcX;
  double* srcY;

  void SetPosition(double sx, double sy) const {
    if (isOutside != nullptr) *isOutside = 0;
    if (srcX != nullptr) *srcX = sx;
    if (srcY != nullptr) *srcY = sy;
  }
  void SetOutside() const {
    if (isOutside != nullptr) *isOutside = 1;
  }
};

bool IsInside(COrbImage const& image, double sx, double sy) {
  return 0 <= sx && sx < image.GetWidth() && 0 <= sy && sy < image.GetHeight();
}

// Inside after rounding: truncation of v + 0.5 lies in 0 .. size - 1. So -0.3 is inside.
bool RoundsInside(double v, int size) { return v + 0.5 > -1.0 && v + 0.5 < size; }

// The sample at position (i, j) of a plane that was found inside as a real position, so that i may be one past the row:
// then it is the next row's first sample, and behind the last sample of the store the 0.0 that stores keep there.
float SampleAfterRounding(COrbImage const& image, int i, int j, int plane) {
  std::ptrdiff_t const row = static_cast<std::ptrdiff_t>(image.GetHeight()) * plane + j;
  std::ptrdiff_t const index = row * image.GetWidth() + i;
  if (index >= image.GetPixelCount()) return 0.0f;
  return *image.GetImageAdr(i, j, plane, 1, nullptr);
}

// Halves go up; truncation toward zero makes -1.5 the first number below.
int Round(double v) { return static_cast<int>(v + 0.5); }

// value(plane) for one plane, or for the brightness of a colour image where `plane` is -1.
template <typename Value>
double OnePlaneOrBrightness(COrbImage const& image, int plane, Value value) {
  if (plane != -1) return value(image.IsColor() ? plane : 0);
  if (!orb::HasBrightness(image)) return value(0);
  return orb::Brightness(value(0), value(1), value(2));
}

// value(plane) for the three colours; one without all three gives its plane 0 three times.
template <typename Value>
void ThreeColors(COrbImage const& image, Value value, double* r, double* g, double* b) {
  bool const color = orb::HasBrightness(image);
  *r = value(0);
  *g = color ? value(1) : *r;
  *b = color ? value(2) : *r;
}

}  // namespace

float COrbImage::GetPixelGray256f(int x, int y, double dx, double dy, double sinA, double cosA, double scale, int plane,
                                  double outside, int nearest, int* isOutside, double* srcX, double* srcY) {
  OutParameters const out{isOutside, srcX, srcY};
  double sx = 0.0;
  double sy = 0.0;
  orb::Transform{dx, dy, sinA, cosA, scale, stdCtr.fx, stdCtr.fy}.Apply(x, y, sx, sy);
  out.SetPosition(sx, sy);
  if (!IsInside(*this, sx, sy)) {
    out.SetOutside();
    return static_cast<float>(outside);
  }
  // Intended: rounding comes after the test of the real position, so the nearest sample may lie one past its row.
  return static_cast<float>(OnePlaneOrBrightness(*this, plane, [&](int p) {
    double const raw =
        nearest != 0 ? SampleAfterRounding(*this, Round(sx), Round(sy), p) : orb::Bilinear(*this, sx, sy, p);
    return To256(raw, p);
  }));
}

float COrbImage::GetPixelGrayRaw(int x, int y, double dx, double dy, double sinA, double cosA, double scale, int plane,
                                 double outside, int nearest, int* isOutside, double* srcX, double* srcY) {
  OutParameters const out{isOutside, srcX, srcY};
  double sx = 0.0;
  double sy = 0.0;
  orb::Transform{dx, dy, sinA, cosA, scale, stdCtr.fx, stdCtr.fy}.Apply(x, y, sx, sy);
  out.SetPosition(sx, sy);
  // Intended: the nearest sample is tested after rounding here, and the real position otherwise.
  bool const inside = nearest != 0 ? RoundsInside(sx, width) && RoundsInside(sy, height) : IsInside(*this, sx, sy);
  if (!inside) {
    out.SetOutside();
    return static_cast<float>(outside);
  }
  return static_cast<float>(OnePlaneOrBrightness(*this, plane, [&](int p) {
    return nearest != 0 ? static_cast<double>(GetPixelGrayRaw(Round(sx), Round(sy), p))
                        : orb::Bilinear(*this, sx, sy, p);
  }));
}

void COrbImage::GetPixelRgb256f(int x, int y, double dx, double dy, double sinA, double cosA, double scale, double* r,
                                double* g, double* b, double outside, int* isOutside, double* srcX, double* srcY) {
  OutParameters const out{isOutside, srcX, srcY};
  double sx = 0.0;
  double sy = 0.0;
  orb::Transform{dx, dy, sinA, cosA, scale, stdCtr.fx, stdCtr.fy}.Apply(x, y, sx, sy);
  out.SetPosition(sx, sy);
  if (!IsInside(*this, sx, sy)) {
    out.SetOutside();
    *r = *g = *b = outside;
    return;
  }
  ThreeColors(
      *this, [&](int p) { return To256(orb::Bilinear(*this, sx, sy, p), p); }, r, g, b);
}

void COrbImage::GetPixelRgbRaw(int x, int y, double dx, double dy, double sinA, double cosA, double scale, double* r,
                               double* g, double* b, double outside, int* isOutside, double* srcX, double* srcY) {
  OutParameters const out{isOutside, srcX, srcY};
  double sx = 0.0;
  double sy = 0.0;
  orb::Transform{dx, dy, sinA, cosA, scale, stdCtr.fx, stdCtr.fy}.Apply(x, y, sx, sy);
  out.SetPosition(sx, sy);
  if (!IsInside(*this, sx, sy)) {
    out.SetOutside();
    *r = *g = *b = outside;
    return;
  }
  ThreeColors(
      *this, [&](int p) { return orb::Bilinear(*this, sx, sy, p); }, r, g, b);
}

float COrbImage::GetPixelGray256f(int x, int y, int dx, int dy, double sinA, double cosA, double scale, int plane,
                                  double outside, int nearest, int* isOutside, double* srcX, double* srcY) {
  return GetPixelGray256f(x, y, static_cast<double>(dx), static_cast<double>(dy), sinA, cosA, scale, plane, outside,
                          nearest, isOutside, srcX, srcY);
}

float COrbImage::GetPixelGrayRaw(int x, int y, int dx, int dy, double sinA, double cosA, double scale, int plane,
                                 double outside, int nearest, int* isOutside, double* srcX, double* srcY) {
  return GetPixelGrayRaw(x, y, static_cast<double>(dx), static_cast<double>(dy), sinA, cosA, scale, plane, outside,
                         nearest, isOutside, srcX, srcY);
}

void COrbImage::GetPixelRgb256f(int x, int y, int dx, int dy, double sinA, double cosA, double scale, double* r,
                                double* g, double* b, double outside, int* isOutside, double* srcX, double* srcY) {
  GetPixelRgb256f(x, y, static_cast<double>(dx), static_cast<double>(dy), sinA, cosA, scale, r, g, b, outside,
                  isOutside, srcX, srcY);
}

void COrbImage::GetPixelRgbRaw(int x, int y, int dx, int dy, double sinA, double cosA, double scale, double* r,
                               double* g, double* b, double outside, int* isOutside, double* srcX, double* srcY) {
  GetPixelRgbRaw(x, y, static_cast<double>(dx), static_cast<double>(dy), sinA, cosA, scale, r, g, b, outside, isOutside,
                 srcX, srcY);
}

void COrbImage::PixelBlt(int dstX, int dstY, int copyWidth, int copyHeight, COrbImage* src, int srcX, int srcY,
                         int convert) {
  if (src->planes != planes) return;
  int const toX = std::clamp(dstX, 0, width);
  int const toY = std::clamp(dstY, 0, height);
  int const fromX = std::clamp(srcX, 0, src->width);
  int const fromY = std::clamp(srcY, 0, src->height);
  int const columns = std::min({std::max(copyWidth, 0), width - toX, src->width - fromX});
  int const rows = std::min({std::max(copyHeight, 0), height - toY, src->height - fromY});
  for (int p = 0; p < planes; ++p) {
    orb::Level const from = orb::LevelOf(*src, p);
    orb::Level const to = orb::LevelOf(*this, p);
    for (int row = 0; row < rows; ++row) {
      float const* in = src->GetImageAdr(fromX, fromY + row, p, 1, nullptr);
      float* out = GetImageAdr(toX, toY + row, p, 0, nullptr);
      for (int i = 0; i < columns; ++i) out[i] = convert != 0 ? static_cast<float>(to.ToRaw(from.To256(in[i]))) : in[i];
    }
  }
}
