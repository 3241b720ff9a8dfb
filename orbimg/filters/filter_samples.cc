// The sample functions of CImgFilter: one position of the image they are called on.
#include <cmath>

#include <orbimg/filters/edge_rules_internal.h>
#include <orbimg/filters/filter.h>
#include <orbimg/filters/shape_internal.h>
#include <orbimg/filters/window_rows_internal.h>

namespace {

constexpr int kMostRows = 5;

double LaplacianAt(float const* const* rows, int x, int width, int shape) {
  return orb::Laplacian{shape}.Apply(rows[0], rows[1], rows[2], orb::TurnedOffset(-1, x, width),
                                     orb::TurnedOffset(1, x, width));
}

}  // namespace

int CImgFilter::GetMeanR(int shape) { return orb::RadiusOf(shape); }
int CImgFilter::GetMedianR(int shape) { return orb::RadiusOf(shape); }
int CImgFilter::GetMinMaxR(int shape) { return orb::RadiusOf(shape); }

float CImgFilter::GetMeanRaw(float** const rows, int x, int shape, double weight, double* mean) {
  orb::Neighbourhood const around(rows, x, width, shape);
  if (!orb::IsShape(shape)) return around.Centre();
  auto const means = orb::MeanFormula(around.Count(), weight).Apply(around.Centre(), around.SumOfOthers());
  if (mean != nullptr) *mean = means.plain;
  return means.weighted;
}

float CImgFilter::GetMeanRaw(int x, int y, int shape, double weight, int plane) {
  float* rows[kMostRows];
  SetFilterAdr(x, y, plane, GetMeanR(shape), rows, 0);
  return GetMeanRaw(rows, x, shape, weight, nullptr);
}

float CImgFilter::GetMeanGray(float** const rows, int x, int shape, double weight, int plane) {
  return static_cast<float>(GetMeanRaw(rows, x, shape, weight, nullptr) - GetLevelMin(plane));
}

float CImgFilter::GetMean256f(float** const rows, int x, int shape, double weight, int plane) {
  return To256(GetMeanRaw(rows, x, shape, weight, nullptr), plane);
}

float CImgFilter::GetMedianRaw(float** const rows, int x, int shape) {
  orb::Neighbourhood around(rows, x, width, shape);
  return around.AtRank(around.Count() / 2);
}

float CImgFilter::GetMedianRaw(int x, int y, int shape, int plane) {
  float* rows[kMostRows];
  SetFilterAdr(x, y, plane, GetMedianR(shape), rows, 0);
  return GetMedianRaw(rows, x, shape);
}

float CImgFilter::GetMedianGray(float** const rows, int x, int shape, int plane) {
  return static_cast<float>(GetMedianRaw(rows, x, shape) - GetLevelMin(plane));
}

float CImgFilter::GetMedian256f(float** const rows, int x, int shape, int plane) {
  return To256(GetMedianRaw(rows, x, shape), plane);
}

float CImgFilter::GetMinMaxRaw(float** const rows, int x, int shape, int index) {
  return orb::Neighbourhood(rows, x, width, shape).AtRank(index);
}

float CImgFilter::HighPassRaw(int x, int y, int plane) {
  double sum = 0.0;
  for (int dy = -1; dy <= 1; ++dy) {
    for (int dx = -1; dx <= 1; ++dx) {
      if (dx == 0 && dy == 0) continue;
      int const row = orb::ClampIndex(std::int64_t{y} + dy, height);
      sum += GetPixelGrayRaw(orb::ClampIndex(std::int64_t{x} + dx, width), row, plane);
    }
  }
  double const c = GetPixelGrayRaw(orb::ClampIndex(x, width), orb::ClampIndex(y, height), plane);
  return static_cast<float>(std::fabs(c * 8.0 - sum));
}

float CImgFilter::GetLaplacianRaw(float** const rows, int x, int shape, int plane) {
  return static_cast<float>(std::fabs(LaplacianAt(rows, x, width, shape)) + GetLevelMin(plane));
}

float CImgFilter::GetLaplacianGray(float** const rows, int x, int shape, int plane) {
  return static_cast<float>(GetLaplacianRaw(rows, x, shape, plane) - GetLevelMin(plane));
}

float CImgFilter::GetLaplacian256f(float** const rows, int x, int shape, int plane) {
  return To256(GetLaplacianRaw(rows, x, shape, plane), plane);
}
