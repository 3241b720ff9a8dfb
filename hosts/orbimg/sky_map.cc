#include <hosts/orbimg/sky_map.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include <hosts/orbimg/frame_statistics.h>

namespace orb::host {
namespace {

constexpr int kSampleStep = 2;  // pixels
constexpr float kEmpty = std::numeric_limits<float>::quiet_NaN();

int EdgeOf(int cell, int cells, int size) { return static_cast<int>(static_cast<std::int64_t>(size) * cell / cells); }

float MedianOfFinite(std::vector<float>& values) {
  std::erase_if(values, [](float v) { return !std::isfinite(v); });
  if (values.empty()) return kEmpty;
  auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// Each cell becomes the median of itself and its neighbours; where none has a value, that of the whole mesh, or 0. On
// the frame's edge only neighbours along the edge count, so that a sloping sky keeps its slope up to there.
void MendMesh(std::vector<float>& mesh, int columns, int rows) {
  std::vector<float> const before = mesh;
  std::vector<float> all = before;
  float const overall = MedianOfFinite(all);
  std::vector<float> near;
  for (int j = 0; j < rows; ++j) {
    for (int i = 0; i < columns; ++i) {
      near.clear();
      int const besides = i > 0 && i < columns - 1 ? 1 : 0;
      int const above = j > 0 && j < rows - 1 ? 1 : 0;
      for (int y = j - above; y <= j + above; ++y) {
        for (int x = i - besides; x <= i + besides; ++x) near.push_back(before[y * columns + x]);
      }
      float const median = MedianOfFinite(near);
      float const value = std::isfinite(median) ? median : overall;
      mesh[j * columns + i] = std::isfinite(value) ? value : 0.0f;
    }
  }
}

// The two cells between whose middles a pixel lies, and how far from the first to the second; before the first middle
// and behind the last the line goes on.
struct MeshPosition {
  int cell;
  int next;
  double fraction;
};

MeshPosition FindInMesh(int pixel, int size, int cells) {
  double const position = (pixel + 0.5) * cells / size - 0.5;
  int const cell = std::clamp(static_cast<int>(std::floor(position)), 0, std::max(cells - 2, 0));
  return MeshPosition{cell, std::min(cell + 1, cells - 1), position - cell};
}

}  // namespace

SkyMap::SkyMap(float const* plane, int initWidth, int initHeight, int cellSide)
    : width(initWidth),
      height(initHeight),
      columns(std::max(1, initWidth / cellSide)),
      rows(std::max(1, initHeight / cellSide)),
      level(static_cast<std::size_t>(columns) * rows),
      noise(level.size()) {
  for (int j = 0; j < rows; ++j) {
    for (int i = 0; i < columns; ++i) MeasureCell(plane, i, j);
  }
  MendMesh(level, columns, rows);
  MendMesh(noise, columns, rows);
}

void SkyMap::MeasureCell(float const* plane, int column, int row) {
  std::vector<float> samples;
  int const right = EdgeOf(column + 1, columns, width);
  int const bottom = EdgeOf(row + 1, rows, height);
  for (int y = EdgeOf(row, rows, height); y < bottom; y += kSampleStep) {
    float const* source = plane + static_cast<std::ptrdiff_t>(y) * width;
    for (int x = EdgeOf(column, columns, width); x < right; x += kSampleStep) samples.push_back(source[x]);
  }
  SampleStatistics const statistics = ClipSamples(samples);
  bool const empty = statistics.samples == 0;
  level[row * columns + column] = empty ? kEmpty : static_cast<float>(statistics.level);
  noise[row * columns + column] = empty ? kEmpty : static_cast<float>(statistics.noise);
}

void SkyMap::InterpolateRow(std::vector<float> const& mesh, int y, float* out) const {
  MeshPosition const j = FindInMesh(y, height, rows);
  auto const inRow = [&](int cell) {
    double const upper = mesh[j.cell * columns + cell];
    double const lower = mesh[j.next * columns + cell];
    return upper * (1.0 - j.fraction) + lower * j.fraction;
  };
  for (int x = 0; x < width; ++x) {
    MeshPosition const i = FindInMesh(x, width, columns);
    out[x] = static_cast<float>(inRow(i.cell) * (1.0 - i.fraction) + inRow(i.next) * i.fraction);
  }
}

}  // namespace orb::host
