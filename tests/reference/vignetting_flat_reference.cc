#include <tests/reference/vignetting_flat_reference.h>

#include <cmath>

namespace orb::test::reference {

namespace {

int Limit(int v, int most) {
  if (v < 0) return 0;
  return v > most ? most : v;
}

CRect Clamp(COrbImage& image, CRect* rect) {
  if (rect == nullptr) return CRect(0, 0, image.GetWidth(), image.GetHeight());
  return CRect(Limit(rect->left, image.GetWidth()), Limit(rect->top, image.GetHeight()),
               Limit(rect->right, image.GetWidth()), Limit(rect->bottom, image.GetHeight()));
}

}  // namespace

void RadialFlat(COrbImage& dst, COrbImage& src, CPoint center, double falloff, double level, CRect* rect) {
  CRect const r = Clamp(dst, rect);
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    for (int y = r.top; y < r.bottom; ++y) {
      for (int x = r.left; x < r.right; ++x) {
        long const dx = x - center.x;
        long const dy = y - center.y;
        double const f = static_cast<double>(dx * dx + dy * dy) * falloff + level;
        float v = 255.0f;
        if (!(f <= 0)) v = static_cast<float>(level / f * src.GetPixelGrayRaw(x, y, p));
        dst.SetPixelGrayRaw(x, y, v, p);
      }
    }
  }
}

void LinearFlat(COrbImage& dst, COrbImage& src, CPoint from, CPoint to, double slope, CRect* rect) {
  CRect const r = Clamp(dst, rect);
  int m = ((to.y + from.y) / 2) & 0xffff;
  if (m > 32767) m -= 65536;
  double const t = static_cast<double>(to.y - from.y) / static_cast<double>(to.x - from.x);
  double c = std::sqrt(1 / (t * t + 1));
  if (to.x - from.x < 0) c = -c;
  double const s = c * t;
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    for (int y = r.top; y < r.bottom; ++y) {
      for (int x = r.left; x < r.right; ++x) {
        double const v = src.GetPixelGrayRaw(x, y, p) - (x * c + y * s - m) * slope;
        dst.SetPixelGrayRaw(x, y, static_cast<float>(v), p);
      }
    }
  }
}

}  // namespace orb::test::reference
