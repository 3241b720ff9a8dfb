#include <tests/reference/filter_reference.h>

#include <algorithm>
#include <cmath>
#include <functional>

#include <tests/reference/sample_order_reference.h>

namespace orb::test::reference {

int MirroredRow(int y, int height) {
  if (y < 0) {
    y = -y;
  } else if (y >= height) {
    y = 2 * height - y - 1;
  }
  // Smaller images than a mirror needs: the nearest row.
  if (y < 0) y = 0;
  if (y >= height) y = height - 1;
  return y;
}

int ClampedColumn(int x, int width) {
  if (x < 0) return 0;
  if (x > width - 1) return width - 1;
  return x;
}

namespace {

Kernel Empty(int radius) {
  Kernel kernel;
  kernel.radius = radius;
  kernel.weights.assign(static_cast<std::size_t>((2 * radius + 1) * (2 * radius + 1)), 0.0f);
  return kernel;
}

void Set(Kernel& kernel, int dx, int dy, double weight) {
  int const size = 2 * kernel.radius + 1;
  kernel.weights[static_cast<std::size_t>((dy + kernel.radius) * size + dx + kernel.radius)] =
      static_cast<float>(weight);
}

void Normalize(Kernel& kernel) {
  double sum = 0;
  for (float w : kernel.weights) sum += w;
  if (sum == 0) return;
  for (float& w : kernel.weights) w = static_cast<float>(w / sum);
}

bool IsWithin(int dx, int dy, double limit) { return dx * dx + dy * dy <= limit; }

void EachSample(COrbImage& dst, CRect* rect, int plane, std::function<double(int, int)> const& formula) {
  int left;
  int top;
  int right;
  int bottom;
  dst.NormalizeRect(rect, left, top, right, bottom);
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) dst.SetPixelGrayRaw(x, y, static_cast<float>(formula(x, y)), plane);
  }
}

double EdgeSquare(double e, double range) {
  double t = e / range;
  if (t > 1.0) t = 1.0;
  return t * t;
}

int AtLeastOne(double v) { return v < 1.0 ? 1 : static_cast<int>(v); }

}  // namespace

Kernel GaussianKernel(int radius, double sigma) {
  if (sigma == -1.0) sigma = radius;
  Kernel kernel = Empty(radius);
  for (int dy = -radius; dy <= radius; ++dy) {
    for (int dx = -radius; dx <= radius; ++dx) {
      double const variance = sigma * sigma;
      Set(kernel, dx, dy, std::exp(-(dx * dx + dy * dy) / (2 * variance)) / (6.283185307179586 * variance));
    }
  }
  Normalize(kernel);
  return kernel;
}

Kernel MeanKernel(int radius, double range, double weight) {
  if (range == -1.0) range = radius;
  Kernel kernel = Empty(radius);
  for (int dy = -radius; dy <= radius; ++dy) {
    for (int dx = -radius; dx <= radius; ++dx) {
      if (IsWithin(dx, dy, range)) Set(kernel, dx, dy, weight);
    }
  }
  Set(kernel, 0, 0, 1.0);
  Normalize(kernel);
  return kernel;
}

Kernel SharpKernel(double range, double weight) {
  int const radius = AtLeastOne(range);
  if (range == -1.0) range = radius;
  Kernel kernel = Empty(radius);
  int n = 0;
  for (int dy = -radius; dy <= radius; ++dy) {
    for (int dx = -radius; dx <= radius; ++dx) {
      if ((dx == 0 && dy == 0) || !IsWithin(dx, dy, range)) continue;
      Set(kernel, dx, dy, -weight);
      n++;
    }
  }
  Set(kernel, 0, 0, 2 * n);
  Normalize(kernel);
  return kernel;
}

Kernel EdgeKernel(int radius, double range) {
  if (range == -1.0) range = radius;
  Kernel kernel = Empty(radius);
  int n = 0;
  for (int dy = -radius; dy <= radius; ++dy) {
    for (int dx = -radius; dx <= radius; ++dx) {
      if ((dx == 0 && dy == 0) || !IsWithin(dx, dy, range)) continue;
      Set(kernel, dx, dy, -1.0);
      n++;
    }
  }
  Set(kernel, 0, 0, n);
  return kernel;
}

double Convolve(COrbImage& src, int plane, int radius, int x, int y, Kernel const& kernel) {
  int const width = src.GetWidth();
  if (radius == kernel.radius && x - radius >= 0 && x + radius < width) {
    double sum = 0;
    for (int dy = -radius; dy <= radius; ++dy) {
      for (int dx = -radius; dx <= radius; ++dx) {
        double const sample = src.GetPixelGrayRaw(x + dx, MirroredRow(y + dy, src.GetHeight()), plane);
        sum += kernel.At(dx, dy) * sample;
      }
    }
    return sum;
  }
  int const m = std::min(radius, kernel.radius);
  if (m == 0) return 0.0;
  float sum = 0;
  for (int dy = -m; dy <= m; ++dy) {
    for (int dx = -m; dx <= m; ++dx) {
      double const sample =
          src.GetPixelGrayRaw(ClampedColumn(x + dx, width), MirroredRow(y + dy, src.GetHeight()), plane);
      sum = static_cast<float>(sum + kernel.At(dx, dy) * sample);
    }
  }
  return sum;
}

float ConvolveClip(COrbImage& src, int plane, int radius, int x, int y, Kernel const& kernel, float lo, float hi) {
  int const m = std::min(radius, kernel.radius);
  if (m == 0) return 0.0f;
  float sum = 0;
  for (int dy = -m; dy <= m; ++dy) {
    for (int dx = -m; dx <= m; ++dx) {
      double sample =
          src.GetPixelGrayRaw(ClampedColumn(x + dx, src.GetWidth()), MirroredRow(y + dy, src.GetHeight()), plane);
      if (sample <= lo) {
        sample = lo;
      } else if (sample >= hi) {
        sample = hi;
      }
      sum = static_cast<float>(sum + kernel.At(dx, dy) * sample);
    }
  }
  return sum;
}

void MeanFilter(COrbImage& dst, COrbImage& src, PerPlane const& range, PerPlane const& weight, CRect* rect) {
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    auto const i = static_cast<std::size_t>(p);
    int const r = AtLeastOne(range[i]);
    Kernel const mean = MeanKernel(r, range[i], weight[i]);
    EachSample(dst, rect, p, [&](int x, int y) { return Convolve(src, p, r, x, y, mean); });
  }
}

void GaussianFilter(COrbImage& dst, COrbImage& src, PerPlane const& sigma, CRect* rect) {
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    auto const i = static_cast<std::size_t>(p);
    int const r = AtLeastOne(2 * std::trunc(sigma[i]));
    Kernel const gaussian = GaussianKernel(r, sigma[i]);
    EachSample(dst, rect, p, [&](int x, int y) { return Convolve(src, p, r, x, y, gaussian); });
  }
}

void BlurMedianFilter(COrbImage& dst, COrbImage& src, PerPlane const& range, CRect* rect) {
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    double const limit = range[static_cast<std::size_t>(p)];
    int const r = AtLeastOne(limit);
    EachSample(dst, rect, p, [&](int x, int y) -> double {
      std::vector<float> found;
      for (int dy = -r; dy <= r; ++dy) {
        for (int dx = -r; dx <= r; ++dx) {
          if (dx * dx + dy * dy > limit * limit) continue;
          if (x + dx < 0 || x + dx >= src.GetWidth() || y + dy < 0 || y + dy >= src.GetHeight()) continue;
          found.push_back(dy > 0 ? 0.0f : src.GetPixelGrayRaw(x + dx, y + dy, p));
        }
      }
      SortAscending(found);
      return found[found.size() / 2];
    });
  }
}

void MeanWithoutEdgeFilter(COrbImage& dst, COrbImage& src, PerPlane const& range, PerPlane const& weight, CRect* rect) {
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    auto const i = static_cast<std::size_t>(p);
    int const r = AtLeastOne(range[i]);
    Kernel const mean = MeanKernel(r, range[i], weight[i]);
    Kernel const edge = EdgeKernel(r, range[i]);
    EachSample(dst, rect, p, [&](int x, int y) {
      double const a = EdgeSquare(Convolve(src, p, r, x, y, edge), dst.GetLevelRange(p));
      return (1 - a) * Convolve(src, p, r, x, y, mean) + a * src.GetPixelGrayRaw(x, y, p);
    });
  }
}

void SharpFilter(COrbImage& dst, COrbImage& src, PerPlane const& range, PerPlane const& weight, CRect* rect) {
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    auto const i = static_cast<std::size_t>(p);
    double const held = range[i] < 1.0 ? 1.0 : range[i];
    Kernel const sharp = SharpKernel(held, weight[i]);
    EachSample(dst, rect, p, [&](int x, int y) { return Convolve(src, p, static_cast<int>(held), x, y, sharp); });
  }
}

void SharpEdgeFilter(COrbImage& dst, COrbImage& src, PerPlane const& range, PerPlane const& weight, CRect* rect) {
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    auto const i = static_cast<std::size_t>(p);
    int const r = AtLeastOne(range[i]);
    Kernel const sharp = SharpKernel(range[i], weight[i]);
    Kernel const edge = EdgeKernel(r, range[i]);
    EachSample(dst, rect, p, [&](int x, int y) {
      double const a = EdgeSquare(Convolve(src, p, r, x, y, edge), dst.GetLevelRange(p));
      return (1 - a) * src.GetPixelGrayRaw(x, y, p) + a * Convolve(src, p, r, x, y, sharp);
    });
  }
}

void UnSharpMask(COrbImage& dst, COrbImage& src, PerPlane const& sigma, PerPlane const& strength,
                 PerPlane const& threshold, CRect* rect) {
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    auto const i = static_cast<std::size_t>(p);
    int const r = AtLeastOne(2 * std::trunc(sigma[i]));
    Kernel const gaussian = GaussianKernel(r, sigma[i]);
    EachSample(dst, rect, p, [&](int x, int y) -> double {
      double const c = src.GetPixelGrayRaw(x, y, p);
      double const b = Convolve(src, p, r, x, y, gaussian);
      if (std::abs(b / c - 1.0) >= threshold[i]) return (c - b) * strength[i] + c;
      return c;
    });
  }
}

}  // namespace orb::test::reference
