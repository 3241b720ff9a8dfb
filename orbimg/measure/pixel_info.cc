#include <orbimg/measure/pixel_info.h>

#include <algorithm>
#include <climits>

#include <orbimg/core/rank_selection_internal.h>
#include <orbimg/core/rectangle_statistics_internal.h>

namespace {

constexpr int kResults = 3;  // doubles that a result addresses

struct PixelInfo {
  double maximum = 0.0;
  double minimum = 0.0;
  double mean = 0.0;
  double deviation = 0.0;
  double median = 0.0;
};

// One pixel has no deviation, even where its sample is no number or infinite.
PixelInfo InfoOfOne(double v) { return PixelInfo{v, v, v, 0.0, v}; }

orb::Spread SpreadAbout(double mean, orb::PlaneValues const& values) {
  orb::RankSearch search(values, values.Count() / 2);
  double const deviation = orb::DeviationOf(values, mean, [&](float const* row) { search.AddRow(row); });
  return orb::Spread{deviation, search.Find()};
}

PixelInfo InfoOf(orb::PlaneValues const& values, bool withMedian) {
  if (values.Count() == 1) return InfoOfOne(values.Row(0)[0]);
  float const corner = values.Row(0)[0];
  orb::Extrema<float> extrema{corner, corner};
  PixelInfo info;
  info.mean = orb::MeanOf(values, [&](float const* row) { orb::WidenByRow(values, row, extrema); });
  info.maximum = extrema.max;
  info.minimum = extrema.min;
  if (!withMedian) {
    info.deviation = orb::DeviationOf(values, info.mean, [](float const*) {});
    return info;
  }
  orb::Spread const spread = SpreadAbout(info.mean, values);
  info.deviation = spread.deviation;
  info.median = spread.median;
  return info;
}

// A side of the square around a centre, held at the range of int.
int Side(int centre, int offset) {
  return static_cast<int>(std::clamp<long long>(static_cast<long long>(centre) + offset, INT_MIN, INT_MAX));
}

}  // namespace

namespace orb {

void CalcPixelInfo(COrbImage const& image, CRect rect, double* maximum, double* minimum, double* mean,
                   double* deviation, double* median) {
  for (double* const result : {maximum, minimum, mean, deviation, median}) {
    if (result != nullptr) std::fill_n(result, kResults, 0.0);
  }
  Bounds const bounds = ClampRect(&rect, image.GetWidth(), image.GetHeight());
  if (bounds.IsEmpty()) return;
  for (int p = 0; p < std::min(image.GetPlanes(), kResults); ++p) {
    PixelInfo const info = InfoOf(PlaneValues(image, bounds, p), median != nullptr);
    maximum[p] = info.maximum;
    minimum[p] = info.minimum;
    mean[p] = info.mean;
    deviation[p] = info.deviation;
    if (median != nullptr) median[p] = info.median;
  }
}

Spread CalcSpread(COrbImage const& image, CRect rect, int plane) {
  Bounds const bounds = ClampRect(&rect, image.GetWidth(), image.GetHeight());
  if (bounds.IsEmpty() || plane >= image.GetPlanes()) return Spread{};
  PlaneValues const values(image, bounds, plane);
  if (values.Count() == 1) return Spread{0.0, values.Row(0)[0]};
  return SpreadAbout(MeanOf(values, [](float const*) {}), values);
}

}  // namespace orb

void CImgPixelInfo::Calc(CPoint centre, int size, double* maximum, double* minimum, double* mean, double* deviation,
                         double* median) {
  int const h = size / 2;
  CRect const square(Side(centre.x, -h), Side(centre.y, -h), Side(centre.x, h + 1), Side(centre.y, h + 1));
  Calc(square, maximum, minimum, mean, deviation, median);
}

void CImgPixelInfo::Calc(CRect rect, double* maximum, double* minimum, double* mean, double* deviation,
                         double* median) {
  orb::CalcPixelInfo(*this, rect, maximum, minimum, mean, deviation, median);
}
