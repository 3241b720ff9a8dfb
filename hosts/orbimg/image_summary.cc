#include <hosts/orbimg/image_summary.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include <hosts/orbimg/upper_median.h>

namespace orb::host {
namespace {

std::vector<float> FiniteSamples(COrbImage const& image, int plane) {
  std::vector<float> samples;
  samples.reserve(static_cast<std::size_t>(image.GetWidth()) * static_cast<std::size_t>(image.GetHeight()));
  for (int y = 0; y < image.GetHeight(); ++y) {
    float const* const row = image.GetImageAdr(0, y, plane, 1, nullptr);
    std::copy_if(row, row + image.GetWidth(), std::back_inserter(samples), [](float v) { return std::isfinite(v); });
  }
  return samples;
}

}  // namespace

PlaneSummary SummarizePlane(COrbImage const& image, int plane) {
  PlaneSummary summary;
  summary.black = image.GetLevelMin(plane);
  summary.white = image.GetLevelMax(plane);
  std::vector<float> samples = FiniteSamples(image, plane);
  summary.nonFinite =
      static_cast<std::int64_t>(image.GetWidth()) * image.GetHeight() - static_cast<std::int64_t>(samples.size());
  if (samples.empty()) return summary;
  auto const [min, max] = std::minmax_element(samples.begin(), samples.end());
  summary.min = *min;
  summary.max = *max;
  auto const count = static_cast<double>(samples.size());
  double sum = 0.0;
  for (float const v : samples) sum += v;
  summary.mean = sum / count;
  double squares = 0.0;
  for (float const v : samples) squares += (v - summary.mean) * (v - summary.mean);
  summary.deviation = std::sqrt(squares / count);
  summary.median = TakeUpperMedian(samples);
  summary.sky = MeasureSky(image, plane, nullptr);
  return summary;
}

}  // namespace orb::host
