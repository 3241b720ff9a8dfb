#include <tests/reference/matching_reference.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace orb::test::reference {

namespace {

constexpr double kNone = 3.402823466e+38;

// difference(x, y, plane) over the overlap; sum(...) decides on the order.
struct Overlap {
  int left, right, top, bottom;
  bool IsOutside(COrbImage& reference) const {
    return left >= reference.GetWidth() || right < 0 || top >= reference.GetHeight() || bottom < 0 || left == right ||
           top == bottom;
  }
};

using Difference = std::function<double(int x, int y, int plane)>;
using Sum = std::function<double(Overlap const&, int planes, Difference const&)>;

double RunningSum(Overlap const& o, int planes, Difference const& difference) {
  double sum = 0.0;
  for (int p = 0; p < planes; ++p) {
    for (int y = o.top; y < o.bottom; ++y) {
      for (int x = o.left; x < o.right; ++x) {
        double const d = difference(x, y, p);
        sum += d * d;
      }
    }
  }
  return sum;
}

double SumInStrips(Overlap const& o, int planes, Difference const& difference) {
  double sum = 0.0;
  for (int p = 0; p < planes; ++p) {
    for (int strip = o.top / 16; strip <= (o.bottom - 1) / 16; ++strip) {
      double partial[128] = {};
      for (int tile = o.left / 128; tile <= (o.right - 1) / 128; ++tile) {
        for (int y = std::max(o.top, strip * 16); y < std::min(o.bottom, strip * 16 + 16); ++y) {
          for (int x = std::max(o.left, tile * 128); x < std::min(o.right, tile * 128 + 128); ++x) {
            double const d = difference(x, y, p);
            partial[x % 128] += d * d;
          }
        }
      }
      for (int half = 64; half >= 1; half /= 2) {
        for (int i = 0; i < half; ++i) partial[i] += partial[i + half];
      }
      sum += partial[0];
    }
  }
  return sum;
}

double Mean(COrbImage& reference, COrbImage& source, Overlap const& o, Difference const& difference, Sum const& sum) {
  if (o.IsOutside(reference)) return kNone;
  int const planes = std::min(reference.GetPlanes(), source.GetPlanes());
  return sum(o, planes, difference) / ((o.right - o.left) * (o.bottom - o.top) * planes);
}

double WholeValue(COrbImage& reference, COrbImage& source, int dx, int dy, double const* ratio, Sum const& sum) {
  Overlap const o{std::max(dx, 0), std::min(dx + source.GetWidth(), reference.GetWidth()), std::max(dy, 0),
                  std::min(dy + source.GetHeight(), reference.GetHeight())};
  return Mean(
      reference, source, o,
      [&](int x, int y, int p) {
        double const r = static_cast<float>(ratio[p]);
        return reference.GetPixelGrayRaw(x, y, p) - source.GetPixelGrayRaw(x - dx, y - dy, p) * r;
      },
      sum);
}

// A source of one column or row stands for its own neighbour.
double SourceValue(COrbImage& source, double sx, double sy, int plane) {
  int const width = source.GetWidth();
  int const height = source.GetHeight();
  int ix;
  int iy;
  bool heldX = false;
  bool heldY = false;
  if (sx >= width - 1) {
    heldX = true;
    ix = std::max(width - 2, 0);
    sx = width - 1;
  } else {
    ix = static_cast<int>(sx);
  }
  if (sy >= height - 1) {
    heldY = true;
    iy = std::max(height - 2, 0);
    sy = height - 1;
  } else {
    iy = static_cast<int>(sy);
  }
  if (ix == sx && iy == sy && !heldX && !heldY) return source.GetPixelGrayRaw(ix, iy, plane);
  double const fx = sx - ix;
  double const fy = sy - iy;
  int const nextX = std::min(ix + 1, width - 1);
  int const nextY = std::min(iy + 1, height - 1);
  double const a = source.GetPixelGrayRaw(ix, iy, plane);
  double const b = source.GetPixelGrayRaw(nextX, iy, plane);
  double const c = source.GetPixelGrayRaw(ix, nextY, plane);
  double const d = source.GetPixelGrayRaw(nextX, nextY, plane);
  return (b * fx + a * (1 - fx)) * (1 - fy) + (d * fx + c * (1 - fx)) * fy;
}

double FractionalValue(COrbImage& reference, COrbImage& source, double dx, double dy, double const* ratio,
                       Sum const& sum) {
  double const left = std::max(std::ceil(dx), 0.0);
  double const right = std::min(std::floor(dx) + source.GetWidth(), static_cast<double>(reference.GetWidth()));
  double const top = std::max(std::ceil(dy), 0.0);
  double const bottom = std::min(std::floor(dy) + source.GetHeight(), static_cast<double>(reference.GetHeight()));
  if (left >= reference.GetWidth() || right < 0 || top >= reference.GetHeight() || bottom < 0) return kNone;
  Overlap const o{static_cast<int>(left), static_cast<int>(right), static_cast<int>(top), static_cast<int>(bottom)};
  if (o.right <= o.left || o.bottom <= o.top) return kNone;
  return Mean(
      reference, source, o,
      [&](int x, int y, int p) {
        double const r = static_cast<float>(ratio[p]);
        return reference.GetPixelGrayRaw(x, y, p) - SourceValue(source, x - dx, y - dy, p) * r;
      },
      sum);
}

}  // namespace

double MatchingValue(COrbImage& reference, COrbImage& source, int dx, int dy, double const* ratio) {
  return WholeValue(reference, source, dx, dy, ratio, RunningSum);
}

double MatchingValue(COrbImage& reference, COrbImage& source, double dx, double dy, double const* ratio) {
  return FractionalValue(reference, source, dx, dy, ratio, RunningSum);
}

double MatchingValueInStrips(COrbImage& reference, COrbImage& source, int dx, int dy, double const* ratio) {
  return WholeValue(reference, source, dx, dy, ratio, SumInStrips);
}

double MatchingValueInStrips(COrbImage& reference, COrbImage& source, double dx, double dy, double const* ratio) {
  return FractionalValue(reference, source, dx, dy, ratio, SumInStrips);
}

int Match(COrbImage& reference, COrbImage& source, double* x, double* y, int range, int fine,
          MatchingMetrics const& metrics, MatchingTicks* ticks) {
  ticks->total = fine != 0 ? range * range / 4 + 297 : range * range / 4 + 9;
  double ratio[3] = {0.0, 0.0, 0.0};
  ratio[0] = static_cast<double>(reference.GetAvrGrayRaw(0)) / source.GetAvrGrayRaw(0);
  if (reference.IsColor() && source.IsColor()) {
    ratio[1] = static_cast<double>(reference.GetAvrGrayRaw(1)) / source.GetAvrGrayRaw(1);
    ratio[2] = static_cast<double>(reference.GetAvrGrayRaw(2)) / source.GetAvrGrayRaw(2);
  }
  double best = kNone;
  double bestX = 0.0;
  double bestY = 0.0;
  int found = 0;
  int const h = range / 2;
  for (int v = static_cast<int>(*y - h); v <= static_cast<int>(*y + h); v += 2) {
    for (int u = static_cast<int>(*x - h); u <= static_cast<int>(*x + h); u += 2) {
      double const value = metrics.whole(u, v, ratio);
      if (value < best) {
        best = value;
        bestX = u;
        bestY = v;
        found = 1;
      }
      ++ticks->single;
    }
  }
  if (!found) return 0;
  int const bx = static_cast<int>(bestX);
  int const by = static_cast<int>(bestY);
  for (int v = by - 1; v <= by + 1; ++v) {
    for (int u = bx - 1; u <= bx + 1; ++u) {
      if (u == bx && v == by) continue;
      double const value = metrics.whole(u, v, ratio);
      if (value < best) {
        best = value;
        bestX = u;
        bestY = v;
      }
      ++ticks->single;
    }
  }
  for (int stage = 0; fine != 0 && stage < 2; ++stage) {
    double const half = stage == 0 ? 0.6 : 0.19999999999999998;
    double const step = stage == 0 ? 0.3 : 0.1;
    double const cx = bestX;
    double const cy = bestY;
    for (double v = cy - half; v <= cy + half; v += step) {
      for (double u = cx - half; u <= cx + half; u += step) {
        if (u == cx && v == cy) continue;
        double const value = metrics.fractional(u, v, ratio);
        if (value < best) {
          best = value;
          bestX = u;
          bestY = v;
        }
        ++ticks->sixfold;
      }
    }
  }
  *x = bestX;
  *y = bestY;
  return 1;
}

}  // namespace orb::test::reference
