#include <hosts/orbimg/truth_check.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include <hosts/orbimg/upper_median.h>

namespace orb::host {
namespace {

constexpr int kGrid = 9;                   // positions along each side
constexpr double kStarRadius = 8.0;        // pixels that a bright star may disturb
constexpr double kBrightStarFlux = 500.0;  // ADU
constexpr double kBesideLine = 10.0;       // pixels

float SampleAt(COrbImage const& image, int x, int y) { return *image.GetImageAdr(x, y, 0, 1, nullptr); }

bool IsNearStar(Position const& position, std::vector<SimulatedStar> const& stars) {
  return std::any_of(stars.begin(), stars.end(), [&](SimulatedStar const& star) {
    return star.flux >= kBrightStarFlux &&
           SquaredDistance(position, Position{star.x, star.y}) < kStarRadius * kStarRadius;
  });
}

// The sample less the brightest of its neighbours; nothing at the edge.
std::optional<double> FindSpike(COrbImage const& image, Position const& position) {
  auto const x = static_cast<int>(std::lround(position.x));
  auto const y = static_cast<int>(std::lround(position.y));
  if (x < 1 || y < 1 || x >= image.GetWidth() - 1 || y >= image.GetHeight() - 1) return std::nullopt;
  float brightest = -HUGE_VALF;
  for (int dy = -1; dy <= 1; ++dy) {
    for (int dx = -1; dx <= 1; ++dx) {
      if (dx != 0 || dy != 0) brightest = std::max(brightest, SampleAt(image, x + dx, y + dy));
    }
  }
  return static_cast<double>(SampleAt(image, x, y)) - brightest;
}

// The samples along the line moved sideways by `aside` pixels; what lies off the image is left out.
void CollectLine(COrbImage const& image, Position const& from, Position const& to, double aside,
                 std::vector<float>& samples) {
  double const length = std::sqrt(SquaredDistance(from, to));
  double const ux = (to.x - from.x) / length;
  double const uy = (to.y - from.y) / length;
  for (double t = 0.0; t <= length; t += 1.0) {
    double const x = std::floor(from.x + ux * t - uy * aside + 0.5);
    double const y = std::floor(from.y + uy * t + ux * aside + 0.5);
    if (x < 0.0 || y < 0.0 || x >= image.GetWidth() || y >= image.GetHeight()) continue;
    samples.push_back(SampleAt(image, static_cast<int>(x), static_cast<int>(y)));
  }
}

}  // namespace

double FindTransformError(FrameTransform const& found, FrameTransform const& truth, int width, int height) {
  RigidMap const foundMap(found);
  RigidMap const trueMap(truth);
  double sum = 0.0;
  for (int j = 0; j < kGrid; ++j) {
    for (int i = 0; i < kGrid; ++i) {
      Position const reference{static_cast<double>(width - 1) * i / (kGrid - 1),
                               static_cast<double>(height - 1) * j / (kGrid - 1)};
      sum += SquaredDistance(foundMap.ToFrame(reference), trueMap.ToFrame(reference));
    }
  }
  return std::sqrt(sum / (kGrid * kGrid));
}

SpikeCount CountSpikes(COrbImage const& image, std::vector<Position> const& positions,
                       std::vector<SimulatedStar> const& stars, double limit) {
  SpikeCount count;
  for (Position const& position : positions) {
    if (IsNearStar(position, stars)) continue;
    std::optional<double> const spike = FindSpike(image, position);
    if (!spike) continue;
    ++count.pixels;
    if (*spike > limit) ++count.spikes;
  }
  return count;
}

double FindLineExcess(COrbImage const& image, Position const& from, Position const& to) {
  std::vector<float> line;
  std::vector<float> beside;
  CollectLine(image, from, to, 0.0, line);
  CollectLine(image, from, to, kBesideLine, beside);
  CollectLine(image, from, to, -kBesideLine, beside);
  return static_cast<double>(TakeUpperMedian(line)) - TakeUpperMedian(beside);
}

}  // namespace orb::host
