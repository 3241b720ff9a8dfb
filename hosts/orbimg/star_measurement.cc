#include <hosts/orbimg/star_measurement.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include <hosts/orbimg/upper_median.h>

namespace orb::host {
namespace {

constexpr double kRingWidth = 5.0;  // pixels, of the sky beyond the reach
// A star in focus falls off from its middle. Where the light rises again by this, and by the noise of a pixel, to a
// good part of what the middle has, it is a ring, with a bright middle or without.
constexpr double kRise = 1.25;
constexpr double kGoodPart = 0.25;

// The radii of CImgPhotometry::MeasureCount.
ApertureRadii RadiiOf(double width) { return ApertureRadii{2.0 * width + 0.5, 3.5 * width - 0.5, 3.5 * width + 1.5}; }

// Calls visit(sample, distance) for the pixels of plane 0 within `reach`.
template <typename Visit>
void EachWithin(COrbImage const& image, Position const& at, double reach, Visit visit) {
  CPoint const middle = PixelOf(at);
  int const r = static_cast<int>(reach) + 1;
  for (int y = std::max(middle.y - r, 0); y <= std::min(middle.y + r, image.GetHeight() - 1); ++y) {
    float const* const row = image.GetImageAdr(0, y, 0, 1, nullptr);
    for (int x = std::max(middle.x - r, 0); x <= std::min(middle.x + r, image.GetWidth() - 1); ++x) {
      double const distance = std::hypot(x - at.x, y - at.y);
      if (distance <= reach && std::isfinite(row[x])) visit(row[x], distance);
    }
  }
}

}  // namespace

StarMeter::StarMeter(COrbImage const& frame, double initReach) : counter(frame), reach(initReach) {
  WrapSamples(image, frame.GetImageAdr(0, 0, 0, 1, nullptr), frame.GetWidth(), frame.GetHeight(), frame.GetPlanes());
}

bool StarMeter::IsRing(Position const& at, ApertureCount const& light) const {
  std::vector<std::vector<float>> circles(static_cast<std::size_t>(reach + 0.5) + 1);
  EachWithin(image, at, reach,
             [&](float v, double distance) { circles[static_cast<std::size_t>(distance + 0.5)].push_back(v); });
  circles[1].insert(circles[1].end(), circles[0].begin(), circles[0].end());
  if (circles[1].empty()) return false;
  double const middle = TakeUpperMedian(circles[1]) - light.sky;
  double least = middle;
  for (std::size_t i = 2; i < circles.size(); ++i) {
    if (circles[i].empty()) continue;
    double const level = TakeUpperMedian(circles[i]) - light.sky;
    if (level > kRise * least + light.skyNoise && level > kGoodPart * middle) return true;
    least = std::min(least, level);
  }
  return false;
}

double StarMeter::SpreadOf(Position const& at, double sky) const {
  double light = 0.0;
  double moment = 0.0;
  EachWithin(image, at, reach, [&](float v, double distance) {
    light += v - sky;
    moment += (v - sky) * distance;
  });
  return light > 0.0 && moment > 0.0 ? moment / light : 0.0;
}

StarMeasurement StarMeter::Measure(Position const& at) {
  CPoint const pixel = PixelOf(at);
  StarMeasurement star;
  star.at = at;
  ApertureCount const whole = counter.Count(at, {reach, reach + 1.0, reach + 1.0 + kRingWidth}, RingSky::kClipped);
  star.isRing = IsRing(at, whole);
  star.spread = SpreadOf(at, whole.sky);
  star.width = star.isRing ? 0.0 : image.GetFWHM(pixel.x, pixel.y);
  star.count = star.width > 0.0 ? counter.Count(at, RadiiOf(star.width), RingSky::kMean) : whole;
  star.extent = image.MeasureExtent(pixel.x, pixel.y, star.count.sky);
  return star;
}

}  // namespace orb::host
