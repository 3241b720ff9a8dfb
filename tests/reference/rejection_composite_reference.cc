#include <cmath>

#include <tests/reference/composite_reference.h>
#include <tests/reference/sampler_reference.h>

namespace orb::test::reference {

namespace {

int Held(int v, int low, int high) {
  if (v < low) return low;
  if (v > high) return high;
  return v;
}

double LowerOf(double p, double q) {
  if (p < q) return p;
  return q;
}

double NeighbourComparison(COrbImage& dst, int x, int y, int plane, double a, double bs, bool to256) {
  double sumA = 0;
  double sumB = 0;
  for (int dy = -1; dy <= 0; ++dy) {
    for (int dx = -1; dx <= 0; ++dx) {
      if (dx == 0 && dy == 0) continue;
      double v = dst.GetPixelGrayRaw(Held(x + dx, 0, dst.GetWidth()), Held(y + dy, 0, dst.GetHeight()), plane);
      if (to256) v = (v - dst.GetLevelMin(0)) / dst.GetLevelRange(0) * 255.0;
      sumA += std::abs(a - v);
      sumB += std::abs(bs - v);
    }
  }
  if (sumA < sumB) return a;
  return bs;
}

double ChosenValue(COrbImage& dst, COrbImage& first, COrbImage& second, CompositeArguments const& args,
                   Place const& place, int x, int y, int plane) {
  bool const to256 = args.to256 != 0;
  double a = first.GetPixelGrayRaw(x, y, plane);
  if (to256) a = (a - first.GetLevelMin(0)) / first.GetLevelRange(0) * 255.0;
  Sampled const sampled = to256 ? PixelGray256f(second, x, y, place, plane, 0.0, false)
                                : PixelGrayRaw(second, x, y, place, plane, 0.0, false);
  double const b = static_cast<float>(sampled.value[0]);
  double const sx = sampled.sx;
  double const sy = sampled.sy;
  if (sx < 1.0 || second.GetWidth() - 1 <= sx || sy < 1.0 || second.GetHeight() - 1 <= sy) return a;
  if (sampled.outside) return a;
  double const bs = b * args.ratio;
  if (args.radius == 0) {
    if (a >= bs) return bs;
    return a;
  }
  long const r = args.radius > 2 ? 2 : args.radius;
  double amax = a;
  double bmax = b;
  for (int yy = 0; yy < dst.GetHeight(); ++yy) {
    for (int xx = 0; xx < dst.GetWidth(); ++xx) {
      if (yy < y - r || yy > y + r || xx < x - r || xx > x + r) continue;
      double v = first.GetPixelGrayRaw(xx, yy, plane);
      if (to256) v = (v - first.GetLevelMin(plane)) / first.GetLevelRange(plane) * 255.0;
      if (v > amax) amax = v;
      int const ix = Held(static_cast<int>(xx + sx - x + 0.5), 0, second.GetWidth() - 1);
      int const iy = Held(static_cast<int>(yy + sy - y + 0.5), 0, second.GetHeight() - 1);
      int const secondPlane = second.IsColor() ? plane : 0;
      float w = second.GetPixelGrayRaw(ix, iy, secondPlane);
      if (to256) w = second.To256(w, secondPlane);
      if (w > bmax) bmax = w;
    }
  }
  bool aBright;
  bool amaxBright;
  bool bBright;
  bool bmaxBright;
  if (to256) {
    double const bound = args.threshold * 255.0;
    aBright = a > bound;
    amaxBright = amax > bound;
    bBright = b > bound;
    bmaxBright = bmax > bound;
  } else {
    double const firstBound = args.threshold * first.GetMaxPixel(0);
    double const secondBound = args.threshold * second.GetMaxPixel(0);
    aBright = a >= firstBound;
    amaxBright = amax >= firstBound;
    bBright = b >= secondBound;
    bmaxBright = bmax >= secondBound;
  }
  if (!amaxBright && !bmaxBright) return LowerOf(a, b * args.ratio);
  if (!amaxBright && bmaxBright) return LowerOf(a, bmax * args.ratio);
  if (amaxBright && !bmaxBright) return LowerOf(amax, b * args.ratio);
  if (aBright && bBright) return LowerOf(a, bs);
  return NeighbourComparison(dst, x, y, plane, a, bs, to256);
}

}  // namespace

void RejectionComposite(COrbImage& dst, COrbImage& first, COrbImage& second, CompositeArguments const& args,
                        CRect* rect) {
  int left;
  int top;
  int right;
  int bottom;
  dst.NormalizeRect(rect, left, top, right, bottom);
  double const s = std::sin(args.angle * 0.017453292519943295);
  double const c = std::sqrt(1 - s * s);
  Place const place{args.dx, args.dy, s, c, 1.0};
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    for (int y = top; y < bottom; ++y) {
      for (int x = left; x < right; ++x) {
        double v = ChosenValue(dst, first, second, args, place, x, y, p);
        if (args.to256 != 0) v = dst.GetLevelRange(0) * v * 0.00392156862745098 + dst.GetLevelMin(0);
        dst.SetPixelGrayRaw(x, y, static_cast<float>(v), p);
      }
    }
  }
}

}  // namespace orb::test::reference
