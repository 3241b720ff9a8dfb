#include <tests/reference/filter_misc_reference.h>

#include <cmath>

namespace orb::test::reference {

namespace {

struct Area {
  int left, top, right, bottom;

  Area(COrbImage& image, CRect* rect) { image.NormalizeRect(rect, left, top, right, bottom); }
};

void SmoothMono(COrbImage& dst, double level, CFilterKernel const& kernel, int radius, double strength, COrbImage& src,
                Area const& area) {
  double const b = src.GetLevelRange(0) * 0.05;
  for (int y = area.top; y < area.bottom; ++y) {
    CFilterRows window(&src, radius, 0, y, 0, 2);
    for (int x = area.left; x < area.right; ++x) {
      double const c = src.GetPixelGrayRaw(x, y, 0);
      if (c > level) {
        dst.SetPixelGrayRaw(x, y, src.GetPixelGrayRaw(x, y, 0), 0);
        continue;
      }
      double w = strength;
      if (c > level - b) w = (1 - (c - (level - b)) / b) * strength;
      if (w > 1.0) w = 1.0;
      dst.SetPixelGrayRaw(x, y, static_cast<float>(window.Convolve(kernel, x) * w + (1 - w) * c), 0);
    }
  }
}

double BrightnessOf(COrbImage& src, int x, int y) {
  auto const in255 = [&](int plane) {
    return (src.GetPixelGrayRaw(x, y, plane) - src.GetLevelMin(plane)) / src.GetLevelRange(plane) * 255.0;
  };
  if (src.GetDimension() < 3) return in255(0);
  return 0.299 * in255(0) + 0.587 * in255(1) + 0.114 * in255(2);
}

void SmoothColour(COrbImage& dst, double level, CFilterKernel const& kernel, int radius, double strength,
                  COrbImage& src, Area const& area) {
  double const l = (level - dst.GetLevelMin(0)) / dst.GetLevelRange(0) * 255.0;
  for (int y = area.top; y < area.bottom; ++y) {
    for (int x = area.left; x < area.right; ++x) {
      double const b = BrightnessOf(src, x, y);
      double w = strength;
      if (b > l - 16.0) w = (1 - (b - (l - 16.0)) * 0.0625) * strength;
      if (w > 1.0) w = 1.0;
      for (int p = 0; p < 3; ++p) {
        int const from = src.GetPlanes() == 1 ? 0 : p;
        float const sample = src.GetPixelGrayRaw(x, y, from);
        CFilterRows window(&src, radius, 0, y, from, 2);
        double const mixed = window.Convolve(kernel, x) * w + sample * (1 - w);
        dst.SetPixelGrayRaw(x, y, b > l ? sample : static_cast<float>(mixed), p);
      }
    }
  }
}

// The step of a pixel that the contour's grid reads.
float StepAt(COrbImage& src, int x, int y, float l, float f, int unbounded) {
  float const bright = src.GetDimension() > 2 ? src.GetPixelBright256f(x, y) : src.GetPixelGray256f(x, y, 0);
  double v = static_cast<double>(bright) * f;
  if (unbounded == 0) {
    if (v <= 0.0) v = 0.0;
    if (v >= l) v = l;
  }
  if (std::isnan(v)) return 0.0f;
  if (v >= 2147483647.0) return 2147483647.0f;
  if (v <= -2147483648.0) return -2147483648.0f;
  return static_cast<float>(static_cast<int>(v));
}

}  // namespace

void BkgSmooth(COrbImage& dst, double level, int radius, double strength, COrbImage& src, CRect* rect) {
  Area const area(dst, rect);
  CFilterKernel kernel;
  kernel.MakeMean(radius, radius, 1.0);
  if (dst.GetDimension() < 3) {
    SmoothMono(dst, level, kernel, radius, strength, src, area);
  } else {
    SmoothColour(dst, level, kernel, radius, strength, src, area);
  }
}

void Custom(COrbImage& dst, int radius, double* weights, COrbImage& src, CRect* rect) {
  Area const area(dst, rect);
  CFilterKernel const kernel(radius, weights, 0);
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    for (int y = area.top; y < area.bottom; ++y) {
      CFilterRows window(&src, radius, 0, y, p, 2);
      for (int x = area.left; x < area.right; ++x) {
        dst.SetPixelGrayRaw(x, y, static_cast<float>(window.Convolve(kernel, x)), p);
      }
    }
  }
}

void ContourFilter(COrbImage& dst, int levels, int unbounded, COrbImage& src, CRect* rect) {
  Area const area(dst, rect);
  float const l = static_cast<float>(levels > 2 ? levels : 2);
  float const f = l * 0.003921569f;
  for (int y = area.top; y < area.bottom; ++y) {
    for (int x = area.left; x < area.right; ++x) {
      float g[4][4];
      double gy = y - 0.666666;
      for (int i = 0; i < 4; ++i, gy += 0.333333) {
        double gx = x - 0.666666;
        for (int j = 0; j < 4; ++j, gx += 0.333333) {
          g[i][j] = StepAt(src, static_cast<int>(gx), static_cast<int>(gy), l, f, unbounded);
        }
      }
      float sum = 0.0f;
      for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
          float const a = g[i][j];
          float const b = g[i][j + 1];
          float const c = g[i + 1][j];
          float const d = g[i + 1][j + 1];
          sum += 255.0f * static_cast<float>((b != a) + (c != d) + (b != c) + (a != d));
        }
      }
      float const v = sum * 0.11111111f;
      for (int p = 0; p < (dst.GetDimension() > 2 ? 3 : 1); ++p) {
        double const raw = dst.GetLevelRange(p) * v * 0.00392156862745098 + dst.GetLevelMin(p);
        dst.SetPixelGrayRaw(x, y, static_cast<float>(raw), p);
      }
    }
  }
}

void NoiseCut(COrbImage& dst, double radius, int cutCool, double coolThreshold, int cutHot, double hotThreshold,
              COrbImage& src, CRect* rect) {
  Area const area(dst, rect);
  int const r = std::ceil(radius) > 1 ? static_cast<int>(std::ceil(radius)) : 1;
  CFilterKernel disk;
  int const n = disk.MakeDisk(r, radius);
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    for (int y = area.top; y < area.bottom; ++y) {
      CFilterRows window(&src, r, 0, y, p, 2);
      for (int x = area.left; x < area.right; ++x) {
        float const m = window.Rank(disk, x, n / 2);
        float const c = src.GetPixelGrayRaw(x, y, p);
        double const q = std::fabs(static_cast<double>(m) / static_cast<double>(c) - 1.0);
        float v = c;
        if (cutCool != 0 && c < m && q > coolThreshold) {
          v = m;
        } else if (cutHot != 0 && c > m && q > hotThreshold) {
          v = m;
        }
        dst.SetPixelGrayRaw(x, y, v, p);
      }
    }
  }
}

int GetMinMaxFilterNmax(double radius) {
  int const r = std::ceil(radius) > 1 ? static_cast<int>(std::ceil(radius)) : 1;
  CFilterKernel disk;
  return disk.MakeDisk(r, radius);
}

void MinMaxFilter(COrbImage& dst, double radius, int index, COrbImage& src, CRect* rect) {
  Area const area(dst, rect);
  int const r = std::ceil(radius) > 1 ? static_cast<int>(std::ceil(radius)) : 1;
  CFilterKernel disk;
  disk.MakeDisk(r, radius);
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    for (int y = area.top; y < area.bottom; ++y) {
      CFilterRows window(&src, r, 0, y, p, 2);
      for (int x = area.left; x < area.right; ++x) dst.SetPixelGrayRaw(x, y, window.Rank(disk, x, index), p);
    }
  }
}

}  // namespace orb::test::reference
