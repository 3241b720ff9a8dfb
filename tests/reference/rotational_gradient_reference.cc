#include <tests/reference/rotational_gradient_reference.h>

#include <cmath>

namespace orb::test::reference {

namespace {

double ReadAt(COrbImage& src, double px, double py, int plane) {
  int const width = src.GetWidth();
  int const height = src.GetHeight();
  if (px < 0 || px >= width || py < 0 || py >= height) return 0.0;
  int ix, iy;
  if (px < width - 1) {
    ix = static_cast<int>(px);
  } else {
    px = width - 1;
    ix = width - 2;
  }
  if (py < height - 1) {
    iy = static_cast<int>(py);
  } else {
    py = height - 1;
    iy = height - 2;
  }
  // One column or row only: index -1 has no sample; its weight is 0.
  auto const p = [&](int x, int y) -> double { return src.GetPixelGrayRaw(x < 0 ? 0 : x, y < 0 ? 0 : y, plane); };
  if (ix == px && iy == py) return p(ix, iy);
  double const u = px - ix;
  double const v = py - iy;
  return ((1 - u) * p(ix, iy) + u * p(ix + 1, iy)) * (1 - v) + ((1 - u) * p(ix, iy + 1) + u * p(ix + 1, iy + 1)) * v;
}

}  // namespace

void RotationalGradient(COrbImage& dst, double angle, double gain, double cx, double cy, COrbImage& src, CRect* rect) {
  int left, top, right, bottom;
  dst.NormalizeRect(rect, left, top, right, bottom);
  double const radians = angle * 0.017453292519943295;
  for (int plane = 0; plane < dst.GetPlanes(); ++plane) {
    for (int y = top; y < bottom; ++y) {
      for (int x = left; x < right; ++x) {
        double const c = src.GetPixelGrayRaw(x, y, plane);
        double const dx = x - cx;
        double const dy = y - cy;
        double const rho = std::sqrt(dx * dx + dy * dy);
        double const theta = std::atan2(dx, dy);
        double const t1 = theta + radians;
        double const t2 = theta - radians;
        double const s1 = ReadAt(src, rho * std::sin(t1) + cx, rho * std::cos(t1) + cy, plane);
        double const s2 = ReadAt(src, rho * std::sin(t2) + cx, rho * std::cos(t2) + cy, plane);
        double v = (gain + 2.0) * c - s1 - s2;
        if (gain != 0.0) v = v / gain;
        dst.SetPixelGrayRaw(x, y, static_cast<float>(v), plane);
      }
    }
  }
}

}  // namespace orb::test::reference
