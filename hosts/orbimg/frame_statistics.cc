#include <hosts/orbimg/frame_statistics.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace orb::host {
namespace {

constexpr double kDeviationsPerMad = 1.4826;   // of a normal distribution
constexpr double kClip = 3.0;                  // deviations
constexpr double kClippedDeviation = 0.98658;  // of a normal distribution without what lies beyond 3 deviations
constexpr int kMaxRounds = 12;
constexpr int kCellSide = 32;  // pixels

double Median(std::span<float> samples) {
  auto const middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
  std::nth_element(samples.begin(), middle, samples.end());
  return *middle;
}

double DeviationFrom(std::span<float const> samples, double level) {
  double sum = 0.0;
  double squares = 0.0;
  for (float sample : samples) {
    double const d = sample - level;
    sum += d;
    squares += d * d;
  }
  double const n = static_cast<double>(samples.size());
  return std::sqrt(std::max(0.0, squares / n - sum / n * (sum / n)));
}

// 1.4826 MAD; the plain deviation where more than half of the samples are equal.
double FirstNoise(std::span<float> samples, double level) {
  std::vector<float> distances;
  distances.reserve(samples.size());
  for (float sample : samples) distances.push_back(static_cast<float>(std::abs(sample - level)));
  double const mad = Median(distances);
  return mad > 0.0 ? kDeviationsPerMad * mad : DeviationFrom(samples, level);
}

// Puts the samples within the clip first.
std::span<float> KeepNear(std::span<float> samples, double level, double noise) {
  double const low = level - kClip * noise;
  double const high = level + kClip * noise;
  auto const end = std::partition(samples.begin(), samples.end(), [&](float v) { return low <= v && v <= high; });
  return samples.first(static_cast<std::size_t>(end - samples.begin()));
}

CRect WithinImage(COrbImage const& image, CRect const* rect) {
  if (rect == nullptr) return CRect(0, 0, image.GetWidth(), image.GetHeight());
  return CRect(std::max(rect->left, 0), std::max(rect->top, 0), std::min(rect->right, image.GetWidth()),
               std::min(rect->bottom, image.GetHeight()));
}

std::vector<float> SamplesIn(COrbImage const& image, int plane, CRect const& rect) {
  std::vector<float> samples;
  if (rect.left >= rect.right) return samples;
  for (int y = rect.top; y < rect.bottom; ++y) {
    float const* row = image.GetImageAdr(0, y, plane, 1, nullptr);
    samples.insert(samples.end(), row + rect.left, row + rect.right);
  }
  return samples;
}

// Noise of each cell; the cells divide the rectangle evenly.
std::vector<float> NoiseOfCells(COrbImage const& image, int plane, CRect const& rect) {
  int const columns = std::max(1, (rect.right - rect.left) / kCellSide);
  int const rows = std::max(1, (rect.bottom - rect.top) / kCellSide);
  auto const edge = [](int low, int high, int i, int n) {
    return low + static_cast<int>(static_cast<std::int64_t>(high - low) * i / n);
  };
  std::vector<float> noise;
  for (int j = 0; j < rows; ++j) {
    for (int i = 0; i < columns; ++i) {
      CRect const cell(edge(rect.left, rect.right, i, columns), edge(rect.top, rect.bottom, j, rows),
                       edge(rect.left, rect.right, i + 1, columns), edge(rect.top, rect.bottom, j + 1, rows));
      std::vector<float> samples = SamplesIn(image, plane, cell);
      SampleStatistics const statistics = ClipSamples(samples);
      if (statistics.samples > 0) noise.push_back(static_cast<float>(statistics.noise));
    }
  }
  return noise;
}

}  // namespace

SampleStatistics ClipSamples(std::span<float> samples) {
  auto const finite = std::partition(samples.begin(), samples.end(), [](float v) { return std::isfinite(v); });
  std::span<float> kept = samples.first(static_cast<std::size_t>(finite - samples.begin()));
  if (kept.empty()) return SampleStatistics{};
  SampleStatistics statistics;
  statistics.level = Median(kept);
  statistics.noise = FirstNoise(kept, statistics.level);
  for (int round = 0; round < kMaxRounds; ++round) {
    std::size_t const before = kept.size();
    kept = KeepNear(kept, statistics.level, statistics.noise);
    statistics.level = Median(kept);
    statistics.noise = DeviationFrom(kept, statistics.level) / kClippedDeviation;
    if (kept.size() == before) break;
  }
  statistics.samples = static_cast<std::int64_t>(kept.size());
  return statistics;
}

SampleStatistics MeasureSky(COrbImage const& image, int plane, CRect const* rect) {
  CRect const bounds = WithinImage(image, rect);
  std::vector<float> samples = SamplesIn(image, plane, bounds);
  SampleStatistics statistics = ClipSamples(samples);
  if (statistics.samples == 0) return statistics;
  std::vector<float> noise = NoiseOfCells(image, plane, bounds);
  statistics.noise = Median(noise);
  return statistics;
}

}  // namespace orb::host
