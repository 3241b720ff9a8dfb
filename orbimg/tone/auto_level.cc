#include <orbimg/tone/auto_level.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include <orbimg/core/brightness_internal.h>
#include <orbimg/core/rank_selection_internal.h>
#include <orbimg/core/rectangle_statistics_internal.h>
#include <orbimg/tone/auto_level_internal.h>

namespace {

constexpr int kSetting = 6168;
constexpr int kReading = 6167;
constexpr int kAllPlanes = -1;
constexpr int kClasses = 5000;
constexpr double kPerClass = 0.0002;  // 1 / 5000

// A histogram's bounds and classes, and how its walks count.
struct Classes {
  std::vector<int> hist = std::vector<int>(kClasses);
  double min = 0.0;
  double max = 0.0;
  std::int64_t total = 0;

  double Range() const { return max - min; }
  double LevelOf(int i) const { return i * Range() * kPerClass + min; }
  // Intended: one more than the pixels.
  std::int64_t Share(int i) const { return static_cast<std::int64_t>(hist[static_cast<std::size_t>(i)]) + 1; }

  double FractionOf(double level) const { return (level - min) / Range(); }
};

Classes MakeClasses(orb::Bounds const& bounds, orb::Extrema<double> const& extrema) {
  Classes classes;
  classes.min = extrema.min;
  classes.max = extrema.max;
  classes.total = static_cast<std::int64_t>(bounds.Rows()) * bounds.Columns() + kClasses;
  return classes;
}

bool IsAreaFraction(double fraction) { return 0.0 < fraction && fraction < 1.0; }

double FindBlack(Classes const& classes, double low) {
  if (!IsAreaFraction(low)) return classes.Range() * low + classes.min;
  auto const target = static_cast<std::int64_t>(static_cast<double>(classes.total) * low);
  std::int64_t count = 0;
  int i = 0;
  for (; i < kClasses; ++i) {
    count += classes.Share(i);
    if (count > target) break;
  }
  return classes.LevelOf(i);
}

double FindWhite(Classes const& classes, double high) {
  if (!IsAreaFraction(high)) return classes.Range() * high + classes.min;
  auto const target = static_cast<std::int64_t>((1.0 - high) * static_cast<double>(classes.total));
  std::int64_t count = 0;
  int i = kClasses - 1;
  for (; i >= 0; --i) {
    count += classes.Share(i);
    if (count > target) break;
  }
  return classes.LevelOf(i + 1);
}

double FindLow(Classes const& classes, double black) {
  if (!(black > classes.min && black < classes.max)) return classes.FractionOf(black);
  std::int64_t count = 0;
  for (int i = 0; i < kClasses; ++i) {
    count += classes.Share(i);
    if (classes.LevelOf(i) > black) return static_cast<double>(count) / static_cast<double>(classes.total);
  }
  return 0.0;
}

double FindHigh(Classes const& classes, double white) {
  if (!(white < classes.max && white > classes.min)) return classes.FractionOf(white);
  std::int64_t count = 0;
  for (int i = kClasses - 1; i > 0; --i) {
    count += classes.Share(i);
    // Intended: the share that is taken off is that of the class below.
    if (classes.LevelOf(i) < white) {
      return 1.0 - static_cast<double>(count - classes.Share(i - 1)) / static_cast<double>(classes.total);
    }
  }
  return 1.0;
}

// Of plane 0's samples in the rectangle; 0 and 0 where it is empty.
orb::Extrema<double> PlaneExtremaOf(COrbImage const& image, orb::Bounds const& bounds) {
  if (bounds.IsEmpty()) return {};
  orb::PlaneValues values(image, bounds, 0);
  auto const found = orb::ExtremaOf(values);
  return {found.min, found.max};
}

// Lowest and highest brightness, then brought back to raw units; 0 and 0 where the rectangle is empty.
orb::Extrema<double> BrightnessExtremaOf(COrbImage const& image, orb::Bounds const& bounds) {
  if (bounds.IsEmpty()) return {};
  orb::Brightness256Values values(image, bounds);
  auto const found = orb::ExtremaOf(values);
  return {image.ToRaw(found.min, 0), image.ToRaw(found.max, 0)};
}

template <typename Values>
double MeanOf(Values& values) {
  return orb::MeanOf(values, [](auto const*) {});
}

// Intended: one further than the tenth percentile; the last value where there is none.
template <typename Values>
double LowPercentileOf(Values& values) {
  orb::RankSearch search(values, std::min(values.Count() / 10 + 1, values.Count() - 1));
  for (int row = 0; row < values.Rows(); ++row) search.AddRow(values.Row(row));
  return search.Find();
}

bool TakesBrightness(COrbImage const& image, int perPlane) { return perPlane == 0 && orb::HasBrightness(image); }

// Calls each(values, plane) for the brightness, or for every plane's samples. An empty rectangle has neither.
template <typename Each>
void EachStatistics(COrbImage const& image, CRect const* rect, int perPlane, Each each) {
  orb::Bounds const bounds = orb::ClampRect(rect, image.GetWidth(), image.GetHeight());
  if (bounds.IsEmpty()) return;
  if (TakesBrightness(image, perPlane)) {
    each(orb::RawBrightnessValues(image, bounds), kAllPlanes);
    return;
  }
  for (int p = 0; p < image.GetPlanes(); ++p) each(orb::PlaneValues(image, bounds, p), p);
}

}  // namespace

void CImgAutoLevel::Do(double low, double high, int perPlane, CRect* rect) {
  orb::Bounds const bounds = orb::ClampRect(rect, width, height);
  if (TakesBrightness(*this, perPlane)) {
    Classes classes = MakeClasses(bounds, BrightnessExtremaOf(*this, bounds));
    GetHistGram(classes.hist.data(), kClasses, classes.min, classes.max, kAllPlanes, rect, 1, kSetting);
    if (!bounds.IsEmpty()) SetLevel(kAllPlanes, FindBlack(classes, low), FindWhite(classes, high));
    return;
  }
  if (width < 1 || height < 1) return;
  for (int p = 0; p < planes; ++p) {
    // Intended: the extremes are those of the whole plane, whatever the rectangle.
    orb::Extrema<double> extrema{};
    GetMinMax(p, &extrema.min, &extrema.max);
    Classes classes = MakeClasses(bounds, extrema);
    GetHistGram(classes.hist.data(), kClasses, classes.min, classes.max, p, rect, 0, 0);
    SetLevel(p, FindBlack(classes, low), FindWhite(classes, high));
  }
}

void CImgAutoLevel::Get(double& low, double& high, CRect* rect) {
  orb::Bounds const bounds = orb::ClampRect(rect, width, height);
  bool const byBrightness = TakesBrightness(*this, 0);
  Classes classes =
      MakeClasses(bounds, byBrightness ? BrightnessExtremaOf(*this, bounds) : PlaneExtremaOf(*this, bounds));
  GetHistGram(classes.hist.data(), kClasses, classes.min, classes.max, kAllPlanes, rect, 1, kReading);
  low = bounds.IsEmpty() ? 0.0 : FindLow(classes, levelMin[0]);
  high = bounds.IsEmpty() ? 1.0 : FindHigh(classes, levelMax[0]);
}

void CImgAutoLevel::DoByMean(double lowFactor, double highFactor, int perPlane, CRect* rect) {
  EachStatistics(*this, rect, perPlane, [&](auto values, int plane) {
    double const mean = MeanOf(values);
    double const deviation = orb::DeviationOf(values, mean, [](auto const*) {});
    SetLevel(plane, mean - deviation * lowFactor, mean + deviation * highFactor);
  });
}

void CImgAutoLevel::DoByMedian(double lowFactor, double highFactor, int perPlane, CRect* rect, double fixedRange) {
  EachStatistics(*this, rect, perPlane, [&](auto values, int plane) {
    if (!IsColor() && fixedRange != 0.0) {
      double const black = LowPercentileOf(values);
      SetLevel(plane, black, black + fixedRange);
      return;
    }
    double const mean = MeanOf(values);
    orb::RankSearch search(values, values.Count() / 2);
    double const deviation = orb::DeviationOf(values, mean, [&](auto const* row) { search.AddRow(row); });
    double const median = search.Find();
    SetLevel(plane, median - deviation * lowFactor, median + deviation * highFactor);
  });
}
