#include <tests/reference/star_filter_reference.h>

#include <algorithm>
#include <cmath>

namespace orb::test::reference {

namespace {

struct Area {
  int left, top, right, bottom;

  Area(COrbImage& image, CRect* rect) { image.NormalizeRect(rect, left, top, right, bottom); }
  bool IsEmpty() const { return left >= right || top >= bottom; }
};

int CeilRadius(double radius) { return std::ceil(radius) > 1 ? static_cast<int>(std::ceil(radius)) : 1; }

// The entry of a sorted list; 0.0 where it has none.
double Entry(float const* sorted, int count, double index) {
  return index >= 0 && index < count ? sorted[static_cast<int>(index)] : 0.0;
}

float SharpSample(float const* s, int n, float c, double position, double threshold, int keepPeak) {
  double const top = Entry(s, n, n - 1);
  if (keepPeak != 0 && top == c) return c;
  double const i = std::floor(position);
  double v = Entry(s, n, i);
  if (i != n - 1) v = (position - i) * (Entry(s, n, i + 1) - Entry(s, n, i)) + Entry(s, n, i);
  if (threshold != 0.0) {
    double const q = std::fabs(v / top - 1.0);
    if (q < threshold || std::isnan(q)) return c;
  }
  return static_cast<float>(v);
}

CFilterKernel const& EdgeKernel() {
  static float const weights[] = {-1, -1, -1, -1, 8, -1, -1, -1, -1};
  static CFilterKernel const kernel(1, weights, 9);
  return kernel;
}

double ThresholdOf(COrbImage& src, int plane, double threshold) {
  return src.GetLevelRange(plane) * threshold * 1.003921568627451;
}

// Stage one: the row yy of the source, blurred, into B.
void BlurRow(COrbImage& b, int row, CFilterKernel const& g, COrbImage& src, int yy, int plane, Area const& area) {
  CFilterRows window(&src, 2, 0, yy, plane, 2);
  for (int x = std::max(area.left - 2, 0); x <= std::min(area.right + 2, src.GetWidth() - 1); ++x) {
    float const blurred = window.ConvolveClip(g, x, static_cast<float>(src.GetLevelMin(plane)),
                                              static_cast<float>(src.GetLevelMax(plane)));
    b.SetPixelGrayRaw(x, row, std::fabs(blurred), 0);
  }
}

// Stage two: the edge strength at distance d from the centre, into A.
void EdgeRow(COrbImage& a, COrbImage& b, int d, double t, Area const& area) {
  CFilterRows window(&b, 1, 0, d + 2, 0, 2);
  for (int x = std::max(area.left - 1, 0); x <= std::min(area.right + 1, b.GetWidth() - 1); ++x) {
    double e = std::fabs(window.Convolve(EdgeKernel(), x));
    if (e < t) e = 0;
    a.SetPixelGrayRaw(x, d + 1, static_cast<float>(e), 0);
  }
}

constexpr float kMarker = 3.4028235e38f;

void MarkRow(COrbImage& w, int row, int r, COrbImage& src, int yy, int plane, double t, Area const& area) {
  CFilterRows window(&src, r, 0, yy, plane, 2);
  for (int x = std::max(area.left - r, 0); x < std::min(area.right + r, src.GetWidth()); ++x) {
    double const e = std::fabs(window.Convolve(EdgeKernel(), x));
    w.SetPixelGrayRaw(x, row, e >= t ? kMarker : window.Pixel(x, yy), 0);
  }
}

bool HasEdgeNear(COrbImage& w, int r, int x, CFilterKernel const& disk, int height) {
  int const m = disk.radius;
  for (int yy = std::max(r - m, 0); yy <= std::min({r + m, height - 1, 2 * r}); ++yy) {
    for (int xx = std::max(x - m, 0); xx <= std::min(x + m, w.GetWidth() - 1); ++xx) {
      if (disk.Value(xx - x, yy - r) != 0.0f && w.GetPixelGrayRaw(xx, yy, 0) == kMarker) return true;
    }
  }
  return false;
}

float SmoothSample(COrbImage& w, int r, int x, CFilterKernel const& g, CFilterKernel const& disk, int height, float c) {
  if (w.GetPixelGrayRaw(x, r, 0) == kMarker) return c;
  if (HasEdgeNear(w, r, x, disk, height)) return c;
  float sum = 0.0f;
  float weight = 0.0f;
  int index = 0;
  for (int yy = 0; yy <= 2 * r; ++yy) {
    for (int xx = x - r; xx <= x + r; ++xx) {
      float const v = w.GetPixelGrayRaw(std::clamp(xx, 0, w.GetWidth() - 1), yy, 0);
      float const cell = g.ValueAt(index++);
      if (v == kMarker) continue;
      sum = static_cast<float>(sum + static_cast<double>(cell) * v);
      weight += cell;
    }
  }
  return weight == 0.0f ? c : sum / weight;
}

}  // namespace

int GetStarSharpFilterNum(double radius) {
  CFilterKernel disk;
  return disk.MakeDisk(CeilRadius(radius), radius);
}

void StarSharpFilter(COrbImage& dst, double radius, double position, double threshold, int keepPeak, COrbImage& src,
                     CRect* rect) {
  Area const area(dst, rect);
  int const r = CeilRadius(radius);
  CFilterKernel disk;
  int const n = disk.MakeDisk(r, radius);
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    for (int y = area.top; y < area.bottom; ++y) {
      CFilterRows window(&src, r, 0, y, p, 2);
      for (int x = area.left; x < area.right; ++x) {
        float const* const s = window.Collect(disk, x);
        float const c = src.GetPixelGrayRaw(x, y, p);
        dst.SetPixelGrayRaw(x, y, SharpSample(s, n, c, position, threshold, keepPeak), p);
      }
    }
  }
}

void StarEnhanceFilter(COrbImage& dst, double sigma, double strength, double threshold, COrbImage& src, CRect* rect) {
  Area const area(dst, rect);
  if (area.IsEmpty()) return;
  CFilterKernel g, s;
  g.MakeGaussian(CeilRadius(sigma), sigma);
  s.MakeGaussian(1, 1.0);
  COrbImage b(-32, src.GetWidth(), 5, 1, 1.0, 0.0, 1, nullptr, nullptr);
  COrbImage a(-32, src.GetWidth(), 3, 1, 1.0, 0.0, 1, nullptr, nullptr);
  float const narrowed = static_cast<float>(strength);
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    double const t = ThresholdOf(src, p, threshold);
    for (int y = area.top; y < area.bottom; ++y) {
      if (y == area.top) {
        for (int yy = y - 2; yy <= y + 2; ++yy) BlurRow(b, yy - y + 2, g, src, yy, p, area);
        for (int d = -1; d <= 1; ++d) EdgeRow(a, b, d, t, area);
      } else {
        b.LiftUp(1);
        BlurRow(b, 4, g, src, y + 2, p, area);
        a.LiftUp(1);
        EdgeRow(a, b, 1, t, area);
      }
      CFilterRows window(&a, 1, 0, 1, 0, 2);
      for (int x = area.left; x < area.right; ++x) {
        float const product = static_cast<float>(window.Convolve(s, x) * narrowed);
        dst.SetPixelGrayRaw(x, y, src.GetPixelGrayRaw(x, y, p) + product, p);
      }
    }
  }
}

void NebularSmootherFilter(COrbImage& dst, double sigma, double threshold, double clearRadius, COrbImage& src,
                           CRect* rect) {
  Area const area(dst, rect);
  if (area.IsEmpty()) return;
  int const r = static_cast<int>(sigma) + 1;
  CFilterKernel g, disk;
  g.MakeGaussian(r, sigma);
  disk.MakeDisk(CeilRadius(clearRadius), clearRadius);
  COrbImage w(-32, src.GetWidth(), 2 * r + 1, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    double const t = ThresholdOf(src, p, threshold);
    for (int y = area.top; y < area.bottom; ++y) {
      if (y == area.top) {
        for (int yy = y - r; yy < y + r; ++yy) MarkRow(w, yy - y + r, r, src, yy, p, t, area);
      } else {
        w.LiftUp(1);
      }
      MarkRow(w, 2 * r, r, src, y + r, p, t, area);
      for (int x = area.left; x < area.right; ++x) {
        float const c = src.GetPixelGrayRaw(x, y, p);
        dst.SetPixelGrayRaw(x, y, SmoothSample(w, r, x, g, disk, src.GetHeight(), c), p);
      }
    }
  }
}

void DigitalDvlp(COrbImage& dst, double pivot, double weight, COrbImage& src, int const* blurPlane, CRect* rect) {
  auto const in255 = [](COrbImage& image, int plane, double raw) {
    return (raw - image.GetLevelMin(plane)) / image.GetLevelRange(plane) * 255.0;
  };
  double const a = in255(dst, 0, pivot);
  double const b = in255(dst, 0, src.GetAvrGrayRaw(0)) + a;
  Area const area(dst, rect);
  CFilterKernel k;
  k.MakeMean(1, 1.0, weight);
  int const windows = dst.GetDimension() > 2 ? 3 : 1;
  for (int p = 0; p < dst.GetPlanes(); ++p) {
    int const q = blurPlane[p];
    for (int y = area.top; y < area.bottom; ++y) {
      CFilterRows window[3];
      for (int i = 0; i < windows; ++i) window[i].Set(&src, 1, 0, y, i, 2);
      for (int x = area.left; x < area.right; ++x) {
        float const s = static_cast<float>(in255(src, p, src.GetPixelGrayRaw(x, y, p)));
        double result = s;
        if (!(s <= 0)) {
          double v = 0.0;
          if (q >= 3) {
            double t[3] = {};
            for (int i = 0; i < windows; ++i) t[i] = in255(src, i, static_cast<float>(window[i].Convolve(k, x)));
            v = (t[0] + t[1] + t[2]) * 0.3333333333333333;
          } else if (q < windows) {
            v = in255(src, q, window[q].Convolve(k, x));
          }
          result = s / (v + a) * b;
        }
        double const raw = result * dst.GetLevelRange(p) * 0.00392156862745098 + dst.GetLevelMin(p);
        dst.SetPixelGrayRaw(x, y, static_cast<float>(raw), p);
      }
    }
  }
}

}  // namespace orb::test::reference
