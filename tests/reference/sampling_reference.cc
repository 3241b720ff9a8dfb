#include <tests/reference/sampling_reference.h>

#include <cmath>
#include <functional>

#include <tests/reference/pixels_reference.h>

namespace orb::test::reference {

namespace {

// Asks for one plane, or weighs three: blue first.
double Weigh(COrbImage& image, int plane, std::function<double(int)> const& valueOf) {
  if (!image.IsColor()) return valueOf(0);
  if (plane >= 0) return valueOf(plane);
  return 0.114 * valueOf(2) + 0.587 * valueOf(1) + 0.299 * valueOf(0);
}

bool IsInside(COrbImage& image, Position p) {
  return 0.0 <= p.x && p.x < image.GetWidth() && 0.0 <= p.y && p.y < image.GetHeight();
}

// The sample at (x, y), where x may be one past the row: then the first of the next row, or 0 behind the last.
double SampleOrNext(COrbImage& image, int x, int y, int plane) {
  std::ptrdiff_t const index = (static_cast<std::ptrdiff_t>(plane) * image.GetHeight() + y) * image.GetWidth() + x;
  if (index >= image.GetPixelCount()) return 0.0;
  return image.GetImageAdr(0, 0, 0, 1, nullptr)[index];
}

}  // namespace

Position SourcePosition(COrbImage& image, Placement const& at) {
  double const cx = image.GetStdCtr().fx;
  double const cy = image.GetStdCtr().fy;
  if (at.cosA == 1.0 && at.sinA == 0.0 && at.scale == 1.0) return {at.x - at.dx, at.y - at.dy};
  if (at.cosA == 1.0 && at.sinA == 0.0) {
    return {(at.x - cx - at.dx) * at.scale + cx, (at.y - cy - at.dy) * at.scale + cy};
  }
  double const p = at.x - cx - at.dx;
  double const q = cy - at.y + at.dy;
  return {(p * at.cosA - q * at.sinA) * at.scale + cx, cy - (p * at.sinA + q * at.cosA) * at.scale};
}

Sampled Gray256f(COrbImage& image, Placement const& at, int plane, double outside, bool nearest) {
  Position const p = SourcePosition(image, at);
  if (!IsInside(image, p)) return {true, p, static_cast<float>(outside)};
  double value = 0.0;
  if (nearest) {
    int const i = static_cast<int>(p.x + 0.5);
    int const j = static_cast<int>(p.y + 0.5);
    value = Weigh(image, plane, [&](int k) { return To256(image, SampleOrNext(image, i, j, k), k); });
  } else {
    value = Weigh(image, plane, [&](int k) { return To256(image, Bilinear(image, p.x, p.y, k), k); });
  }
  return {false, p, static_cast<float>(value)};
}

Sampled GrayRaw(COrbImage& image, Placement const& at, int plane, double outside, bool nearest) {
  Position const p = SourcePosition(image, at);
  if (nearest) {
    double const i = std::trunc(p.x + 0.5);
    double const j = std::trunc(p.y + 0.5);
    if (!(0.0 <= i && i < image.GetWidth() && 0.0 <= j && j < image.GetHeight())) {
      return {true, p, static_cast<float>(outside)};
    }
    double const value =
        Weigh(image, plane, [&](int k) { return Sample(image, static_cast<int>(i), static_cast<int>(j), k); });
    return {false, p, static_cast<float>(value)};
  }
  if (!IsInside(image, p)) return {true, p, static_cast<float>(outside)};
  double const value = Weigh(image, plane, [&](int k) { return Bilinear(image, p.x, p.y, k); });
  return {false, p, static_cast<float>(value)};
}

SampledRgb Rgb256f(COrbImage& image, Placement const& at, double outside) {
  SampledRgb raw = RgbRaw(image, at, outside);
  if (raw.outside) return raw;
  raw.r = To256(image, raw.r, 0);
  raw.g = image.IsColor() ? To256(image, raw.g, 1) : raw.r;
  raw.b = image.IsColor() ? To256(image, raw.b, 2) : raw.r;
  return raw;
}

SampledRgb RgbRaw(COrbImage& image, Placement const& at, double outside) {
  Position const p = SourcePosition(image, at);
  if (!IsInside(image, p)) return {true, p, outside, outside, outside};
  double const r = Bilinear(image, p.x, p.y, 0);
  if (!image.IsColor()) return {false, p, r, r, r};
  return {false, p, r, Bilinear(image, p.x, p.y, 1), Bilinear(image, p.x, p.y, 2)};
}

namespace {

int Limit(int value, int low, int high) { return value < low ? low : value > high ? high : value; }

}  // namespace

void PixelBlt(COrbImage& dst, int dstX, int dstY, int width, int height, COrbImage& src, int srcX, int srcY,
              bool convert) {
  if (src.GetPlanes() != dst.GetPlanes()) return;
  dstX = Limit(dstX, 0, dst.GetWidth());
  dstY = Limit(dstY, 0, dst.GetHeight());
  srcX = Limit(srcX, 0, src.GetWidth());
  srcY = Limit(srcY, 0, src.GetHeight());
  if (width < 0) width = 0;
  if (width > dst.GetWidth() - dstX) width = dst.GetWidth() - dstX;
  if (width > src.GetWidth() - srcX) width = src.GetWidth() - srcX;
  if (height < 0) height = 0;
  if (height > dst.GetHeight() - dstY) height = dst.GetHeight() - dstY;
  if (height > src.GetHeight() - srcY) height = src.GetHeight() - srcY;
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        double v = Sample(src, srcX + x, srcY + y, p);
        if (convert) v = ToRaw(dst, To256(src, v, p), p);
        dst.SetPixelGrayRaw(dstX + x, dstY + y, static_cast<float>(v), p);
      }
    }
  }
}

}  // namespace orb::test::reference
