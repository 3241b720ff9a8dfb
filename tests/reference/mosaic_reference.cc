#include <tests/reference/mosaic_reference.h>

#include <cmath>

#include <tests/reference/sampler_reference.h>

namespace orb::test::reference {

namespace {

double BrightnessOf(double const* v) { return 0.299 * v[0] + 0.587 * v[1] + 0.114 * v[2]; }

// Whether the second source shows where both cover a pixel of a mono canvas.
bool SecondShows(int mode, double a, double b, double key, double tolerance) {
  if (mode == 0) return true;
  if (mode == 1) {
    if (std::abs(key - b) < tolerance) return false;
    return true;
  }
  if (mode == 2) return a < b;
  if (mode == 3) return b < a;
  return false;
}

bool SecondColorShows(int mode, double const* a, double const* b, double const* key, double tolerance) {
  if (mode == 0) return true;
  if (mode == 1) {
    double sum = 0.0;
    for (int p = 0; p < 3; ++p) sum += std::abs(key[p] - b[p]);
    if (sum < tolerance) return false;
    return true;
  }
  if (mode == 2) return BrightnessOf(a) < BrightnessOf(b);
  if (mode == 3) return BrightnessOf(b) < BrightnessOf(a);
  return false;
}

void Write(COrbImage& canvas, int x, int y, int plane, double v, bool to256) {
  if (to256) v = canvas.GetLevelRange(plane) * v * 0.00392156862745098 + canvas.GetLevelMin(plane);
  canvas.SetPixelGrayRaw(x, y, static_cast<float>(v), plane);
}

void MonoPixel(COrbImage& canvas, int x, int y, COrbImage& first, Place const& firstPlace, COrbImage& second,
               Place const& secondPlace, MosaicArguments const& args, double key, double tolerance) {
  bool const to256 = args.to256 != 0;
  Sampled const sampledA = to256 ? PixelGray256f(first, x, y, firstPlace, -1, args.outside, false)
                                 : PixelGrayRaw(first, x, y, firstPlace, -1, 0.0, false);
  Sampled const sampledB = to256 ? PixelGray256f(second, x, y, secondPlace, -1, args.outside, false)
                                 : PixelGrayRaw(second, x, y, secondPlace, -1, 0.0, false);
  double const a = static_cast<float>(sampledA.value[0]);
  double const b = static_cast<float>(sampledB.value[0]);
  double v;
  if (args.average != 0) {
    v = (a + b) * 0.5;
  } else if (sampledB.outside) {
    v = a;
  } else if (sampledA.outside) {
    v = b;
  } else {
    v = SecondShows(args.mode, a, b, key, tolerance) ? b : a;
  }
  Write(canvas, x, y, 0, v, to256);
}

void ColorPixel(COrbImage& canvas, int x, int y, COrbImage& first, Place const& firstPlace, COrbImage& second,
                Place const& secondPlace, MosaicArguments const& args, double const* key, double tolerance) {
  bool const to256 = args.to256 != 0;
  Sampled const a = to256 ? PixelRgb256f(first, x, y, firstPlace, 0.0) : PixelRgbRaw(first, x, y, firstPlace, 0.0);
  Sampled const b =
      to256 ? PixelRgb256f(second, x, y, secondPlace, args.outside) : PixelRgbRaw(second, x, y, secondPlace, 0.0);
  bool const secondShows = !b.outside && (a.outside || SecondColorShows(args.mode, a.value, b.value, key, tolerance));
  for (int p = 0; p < 3; ++p) {
    double v = secondShows ? b.value[p] : a.value[p];
    if (args.average != 0) v = (a.value[p] + b.value[p]) * 0.5;
    Write(canvas, x, y, p, v, to256);
  }
}

}  // namespace

void Mosaic(COrbImage& canvas, COrbImage& first, COrbImage& second, MosaicArguments const& args, CRect* rect) {
  int left;
  int top;
  int right;
  int bottom;
  canvas.NormalizeRect(rect, left, top, right, bottom);
  double const radians = args.angle * 0.017453292519943295;
  Place const firstPlace{static_cast<double>(args.ox), static_cast<double>(args.oy), 0.0, 1.0, 1.0};
  Place const secondPlace{args.ox + args.dx, args.oy + args.dy, std::sin(radians), std::cos(radians), 1.0};
  double key[3] = {args.key[0], args.key[1], args.key[2]};
  double tolerance = canvas.GetLevelRange(0) * 0.00390625;
  if (args.to256 != 0) {
    for (int p = 0; p < (canvas.IsColor() ? 3 : 1); ++p) {
      key[p] = (key[p] - canvas.GetLevelMin(p)) / canvas.GetLevelRange(p) * 255.0;
    }
    tolerance = 1.0;
  }
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) {
      if (canvas.IsColor()) {
        ColorPixel(canvas, x, y, first, firstPlace, second, secondPlace, args, key, tolerance);
      } else {
        MonoPixel(canvas, x, y, first, firstPlace, second, secondPlace, args, key[0], tolerance);
      }
    }
  }
}

}  // namespace orb::test::reference
