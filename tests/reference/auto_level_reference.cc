#include <tests/reference/auto_level_reference.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <tests/reference/levels_reference.h>
#include <tests/reference/statistics_reference.h>

namespace orb::test::reference {

namespace {

struct Area {
  int left;
  int top;
  int right;
  int bottom;

  long long Product() const { return static_cast<long long>(bottom - top) * (right - left); }
};

int Limit(int v, int size) { return v < 0 ? 0 : v > size ? size : v; }

Area Clamp(COrbImage& image, CRect* rect) {
  int const width = image.GetWidth();
  int const height = image.GetHeight();
  if (rect == nullptr) return {0, 0, width, height};
  return {Limit(rect->left, width), Limit(rect->top, height), Limit(rect->right, width), Limit(rect->bottom, height)};
}

double Brightness256(COrbImage& image, int x, int y) {
  double v[3] = {};
  for (int p = 0; p < 3; ++p) {
    v[p] = (image.GetPixelGrayRaw(x, y, p) - image.GetLevelMin(p)) / image.GetLevelRange(p) * 255.0;
  }
  return 0.299 * v[0] + 0.587 * v[1] + 0.114 * v[2];
}

double BackToRaw(COrbImage& image, double v) {
  return image.GetLevelRange(0) * v * 0.00392156862745098 + image.GetLevelMin(0);
}

// `plane` -1: raw brightness.
std::vector<double> ValuesOf(COrbImage& image, Area const& area, int plane) {
  std::vector<double> values;
  for (int y = area.top; y < area.bottom; ++y) {
    for (int x = area.left; x < area.right; ++x) {
      values.push_back(plane == -1 ? BackToRaw(image, Brightness256(image, x, y)) : image.GetPixelGrayRaw(x, y, plane));
    }
  }
  return values;
}

void FindBrightnessExtremes(COrbImage& image, Area const& area, double& min, double& max) {
  double lowest = Brightness256(image, area.left, area.top);
  double highest = lowest;
  for (int y = area.top; y < area.bottom; ++y) {
    for (int x = area.left; x < area.right; ++x) {
      double const v = Brightness256(image, x, y);
      if (v < lowest) lowest = v;
      if (v > highest) highest = v;
    }
  }
  min = BackToRaw(image, lowest);
  max = BackToRaw(image, highest);
}

double LowLevel(std::vector<int> const& hist, double min, double max, long long total, double low) {
  double const range = max - min;
  if (!(0.0 < low && low < 1.0)) return range * low + min;
  long long const target = static_cast<long long>(total * low);
  long long count = 0;
  int i = 0;
  while (i < 5000) {
    count += hist[i] + 1;
    if (count > target) break;
    ++i;
  }
  return i * range * 0.0002 + min;
}

double HighLevel(std::vector<int> const& hist, double min, double max, long long total, double high) {
  double const range = max - min;
  if (!(0.0 < high && high < 1.0)) return range * high + min;
  long long const target = static_cast<long long>((1.0 - high) * total);
  long long count = 0;
  int i = 4999;
  while (i >= 0) {
    count += hist[i] + 1;
    if (count > target) break;
    --i;
  }
  return (i + 1) * range * 0.0002 + min;
}

double MeanOf(std::vector<double> const& values) {
  double sum = 0.0;
  for (double const v : values) sum += v;
  return sum / static_cast<double>(values.size());
}

double DeviationOf(std::vector<double> const& values, double mean) {
  double sum = 0.0;
  for (double const v : values) sum += (v - mean) * (v - mean);
  return std::sqrt(sum / static_cast<double>(values.size()));
}

// The planes to treat: -1 stands for brightness.
std::vector<int> PlanesFor(COrbImage& image, int perPlane) {
  if (!image.IsColor()) return {0};
  if (perPlane == 0) return {-1};
  return {0, 1, 2};
}

}  // namespace

void AutoLevel(COrbImage& image, double low, double high, int perPlane, CRect* rect) {
  Area const area = Clamp(image, rect);
  for (int const plane : PlanesFor(image, perPlane)) {
    double min = 0.0;
    double max = 0.0;
    if (plane == -1) {
      if (area.left >= area.right || area.top >= area.bottom) return;
      FindBrightnessExtremes(image, area, min, max);
    } else {
      FindMinMax(image, plane, min, max);
    }
    std::vector<int> hist(5000);
    GetHistGram(image, hist.data(), 5000, min, max, plane, rect);
    long long const total = area.Product() + 5000;
    SetLevel(image, plane, LowLevel(hist, min, max, total, low), HighLevel(hist, min, max, total, high));
  }
}

void GetAutoLevel(COrbImage& image, double& low, double& high, CRect* rect) {
  Area const area = Clamp(image, rect);
  double const levelMin = image.GetLevelMin(0);
  double const levelMax = image.GetLevelMax(0);
  double min = 0.0;
  double max = 0.0;
  if (image.IsColor()) {
    FindBrightnessExtremes(image, area, min, max);
  } else {
    std::vector<double> const values = ValuesOf(image, area, 0);
    min = *std::min_element(values.begin(), values.end());
    max = *std::max_element(values.begin(), values.end());
  }
  std::vector<int> hist(5000);
  GetHistGram(image, hist.data(), 5000, min, max, -1, rect);
  double const range = max - min;
  double const total = static_cast<double>(area.Product() + 5000);
  low = 0.0;
  high = 1.0;
  if (levelMin > min && levelMin < max) {
    long long count = 0;
    for (int i = 0; i < 5000; ++i) {
      count += hist[i] + 1;
      if (i * range * 0.0002 + min > levelMin) {
        low = count / total;
        break;
      }
    }
  } else {
    low = (levelMin - min) / range;
  }
  if (levelMax < max && levelMax > min) {
    long long count = 0;
    for (int i = 4999; i > 0; --i) {
      count += hist[i] + 1;
      if (i * range * 0.0002 + min < levelMax) {
        high = 1.0 - (count - hist[i - 1] - 1) / total;
        break;
      }
    }
  } else {
    high = (levelMax - min) / range;
  }
}

void AutoLevelByMean(COrbImage& image, double lowFactor, double highFactor, int perPlane, CRect* rect) {
  Area const area = Clamp(image, rect);
  for (int const plane : PlanesFor(image, perPlane)) {
    std::vector<double> const values = ValuesOf(image, area, plane);
    if (values.empty()) return;
    double const mean = MeanOf(values);
    double const deviation = DeviationOf(values, mean);
    SetLevel(image, plane, mean - deviation * lowFactor, mean + deviation * highFactor);
  }
}

void AutoLevelByMedian(COrbImage& image, double lowFactor, double highFactor, int perPlane, CRect* rect,
                       double fixedRange) {
  Area const area = Clamp(image, rect);
  for (int const plane : PlanesFor(image, perPlane)) {
    std::vector<double> values = ValuesOf(image, area, plane);
    if (values.empty()) return;
    double const deviation = DeviationOf(values, MeanOf(values));
    std::sort(values.begin(), values.end());
    double const median = values[values.size() / 2];
    double black = median - deviation * lowFactor;
    double white = median + deviation * highFactor;
    if (!image.IsColor() && fixedRange != 0.0) {
      black = values[std::min(values.size() / 10 + 1, values.size() - 1)];
      white = black + fixedRange;
    }
    SetLevel(image, plane, black, white);
  }
}

}  // namespace orb::test::reference
