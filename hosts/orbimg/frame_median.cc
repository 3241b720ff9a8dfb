#include <hosts/orbimg/frame_median.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <vector>

#include <hosts/orbimg/upper_median.h>

namespace orb::host {
namespace {
constexpr std::int64_t kMostSamples = std::int64_t{1} << 22;
}

double FindFrameMedian(FrameReader& reader,
                       std::function<void(int plane, int top, int rows, float* samples)> const& prepare) {
  Shape const shape = reader.Shape();
  std::int64_t const total = static_cast<std::int64_t>(shape.width) * shape.height;
  auto const step = static_cast<int>((total + kMostSamples - 1) / kMostSamples);
  std::vector<float> samples;
  std::vector<float> row(static_cast<std::size_t>(shape.width));
  for (int y = 0; y < shape.height; y += step) {
    reader.ReadRows(0, y, 1, row.data());
    if (prepare) prepare(0, y, 1, row.data());
    std::copy_if(row.begin(), row.end(), std::back_inserter(samples), [](float v) { return std::isfinite(v); });
  }
  return TakeUpperMedian(samples);
}

}  // namespace orb::host
