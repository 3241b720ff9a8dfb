#include <tests/reference/resolution_reference.h>

#include <cmath>

namespace orb::test::reference {

double ReadAt(COrbImage& src, double px, double py, int plane) {
  int const width = src.GetWidth();
  int const height = src.GetHeight();
  int ix;
  int iy;
  if (px >= width - 1) {
    px = width - 1;
    ix = width - 2;
  } else {
    ix = static_cast<int>(std::trunc(px));
  }
  if (py >= height - 1) {
    py = height - 1;
    iy = height - 2;
  } else {
    iy = static_cast<int>(std::trunc(py));
  }
  if (ix == px && iy == py) return src.GetPixelGrayRaw(ix, iy, plane);
  double const u = px - ix;
  double const v = py - iy;
  double const p00 = src.GetPixelGrayRaw(ix, iy, plane);
  double const p10 = src.GetPixelGrayRaw(ix + 1, iy, plane);
  double const p01 = src.GetPixelGrayRaw(ix, iy + 1, plane);
  double const p11 = src.GetPixelGrayRaw(ix + 1, iy + 1, plane);
  return ((1 - u) * p00 + u * p10) * (1 - v) + ((1 - u) * p01 + u * p11) * v;
}

void ResolutionByLinear(COrbImage& image, COrbImage& src) {
  for (int p = 0; p < image.GetPlanes(); ++p) {
    for (int y = 0; y < image.GetHeight(); ++y) {
      for (int x = 0; x < image.GetWidth(); ++x) {
        double const px = static_cast<double>(x) * src.GetWidth() / image.GetWidth();
        double const py = static_cast<double>(y) * src.GetHeight() / image.GetHeight();
        image.SetPixelGrayRaw(x, y, static_cast<float>(ReadAt(src, px, py, p)), p);
      }
    }
  }
}

namespace {

double Weight(double t) {
  t = std::fabs(t);
  if (t < 1) return 1 - 2 * (t * t) + t * t * t;
  if (t < 2) return 4 - 8 * t + 5 * (t * t) - t * t * t;
  return 0;
}

double Mirrored(double u, int size) {
  if (u < 0) return -u;
  if (u > size - 1) return (size - 1) - (u - size);
  return u;
}

}  // namespace

void ResolutionByCubic(COrbImage& image, COrbImage& src) {
  double const rx = static_cast<double>(src.GetWidth()) / image.GetWidth();
  double const ry = static_cast<double>(src.GetHeight()) / image.GetHeight();
  for (int p = 0; p < image.GetPlanes(); ++p) {
    for (int y = 0; y < image.GetHeight(); ++y) {
      for (int x = 0; x < image.GetWidth(); ++x) {
        double const sx = x * rx;
        double const sy = y * ry;
        double sum = 0;
        for (double v = sy - 1; v <= sy + 2; v += 1.0) {
          for (double u = sx - 1; u <= sx + 2; u += 1.0) {
            double const qx = Mirrored(u, src.GetWidth());
            double const qy = Mirrored(v, src.GetHeight());
            float const value = static_cast<float>(ReadAt(src, qx, qy, p));
            sum += Weight(v - sy) * Weight(u - sx) * value;
          }
        }
        image.SetPixelGrayRaw(x, y, static_cast<float>(sum), p);
      }
    }
  }
}

}  // namespace orb::test::reference
