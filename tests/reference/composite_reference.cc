#include <tests/reference/composite_reference.h>

#include <cmath>

#include <tests/reference/sampler_reference.h>

namespace orb::test::reference {

namespace {

double OutsideValue(int mode) { return mode == 4 || mode == 5 ? 255.0 : 0.0; }

double Combined(double a, double b, CompositeArguments const& args, bool to256) {
  switch (args.mode) {
    case 0:
      return (a + b) * 0.5;
    case 1:
      return a + b;
    case 2:
      return (1 - args.ratio) * a + args.ratio * b;
    case 3: {
      double const difference = a - b;
      if (args.clamp != 0 && difference < 0) return 0;
      return difference;
    }
    case 4:
      if (to256) {
        double factor = b * 0.00392156862745098;
        if (b <= 0) {
          factor = 0;
        } else if (b >= 255) {
          factor = 1.0;
        }
        return a * factor;
      }
      return a * b;
    case 5:
      if (to256) {
        double divisor = b * 0.00392156862745098;
        if (b <= 0.001) {
          divisor = 0.001 * 0.00392156862745098;
        } else if (b >= 255) {
          divisor = 1.0;
        }
        return a / divisor;
      }
      if (b == 0) return a / 1.0;
      return a / b;
    case 6:
      return std::abs(a - b);
    case 7:
      if (a <= b) return b;
      return a;
    case 8:
      if (a >= b) return b;
      return a;
    default:
      return a;
  }
}

void Store(COrbImage& dst, int x, int y, int plane, double v, bool to256) {
  if (to256) v = dst.GetLevelRange(plane) * v * 0.00392156862745098 + dst.GetLevelMin(plane);
  dst.SetPixelGrayRaw(x, y, static_cast<float>(v), plane);
}

double FirstValue(COrbImage& first, int x, int y, int plane, bool to256) {
  double const raw = first.GetPixelGrayRaw(x, y, plane);
  if (!to256) return raw;
  return (raw - first.GetLevelMin(plane)) / first.GetLevelRange(plane) * 255.0;
}

}  // namespace

void Composite(COrbImage& dst, COrbImage& first, COrbImage& second, CompositeArguments const& args, CRect* rect) {
  if (args.mode == 9) {
    RejectionComposite(dst, first, second, args, rect);
    return;
  }
  bool to256 = args.to256 != 0;
  if (!to256 && (args.mode < 0 || args.mode > 9)) to256 = true;
  int left;
  int top;
  int right;
  int bottom;
  dst.NormalizeRect(rect, left, top, right, bottom);
  double const radians = args.angle * 0.017453292519943295;
  Place const place{args.dx, args.dy, std::sin(radians), std::cos(radians), 1.0};
  double const outside = to256 ? OutsideValue(args.mode) : 0.0;
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) {
      if (!dst.IsColor()) {
        Sampled const sampled = to256 ? PixelGray256f(second, x, y, place, -1, outside, false)
                                      : PixelGrayRaw(second, x, y, place, -1, outside, false);
        float const b = static_cast<float>(sampled.value[0]);
        Store(dst, x, y, 0, Combined(FirstValue(first, x, y, 0, to256), b, args, to256), to256);
        continue;
      }
      Sampled const sampled =
          to256 ? PixelRgb256f(second, x, y, place, outside) : PixelRgbRaw(second, x, y, place, outside);
      for (int p = 0; p < 3; ++p) {
        double const a = FirstValue(first, x, y, p, to256);
        Store(dst, x, y, p, Combined(a, sampled.value[p], args, to256), to256);
      }
    }
  }
}

}  // namespace orb::test::reference
