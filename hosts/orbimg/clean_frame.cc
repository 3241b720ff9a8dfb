#include <hosts/orbimg/clean_frame.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace orb::host {
namespace {

constexpr double kSpikeNoise = 5.0;   // a spike stands this many noises above the sky
constexpr double kSpikeSides = 0.12;  // of its height; a star 1.5 pixels wide keeps 0.15 on either side

float* RowOf(COrbImage& image, int y) { return image.GetImageAdr(0, y, 0, 0, nullptr); }
float const* RowOf(COrbImage const& image, int y) { return image.GetImageAdr(0, y, 0, 1, nullptr); }

// One plane: the mean of all planes, seen through levels on which the 256-scale is the sample itself.
COrbImage JoinPlanes(COrbImage const& image) {
  int const width = image.GetWidth();
  COrbImage work(-32, width, image.GetHeight(), 1, 1.0, 0.0, 1, nullptr, nullptr);
  work.SetLevel(0, 0.0, 255.0);
  int const planes = image.GetPlanes();
  for (int y = 0; y < image.GetHeight(); ++y) {
    float* out = RowOf(work, y);
    for (int plane = 0; plane < planes; ++plane) {
      float const* row = image.GetImageAdr(0, y, plane, 1, nullptr);
      for (int x = 0; x < width; ++x) out[x] += row[x] / static_cast<float>(planes);
    }
  }
  return work;
}

// What is not finite becomes sky.
void SubtractSky(COrbImage& work, SkyMap const& sky) {
  std::vector<float> level(work.GetWidth());
  for (int y = 0; y < work.GetHeight(); ++y) {
    sky.LevelRow(y, level.data());
    float* row = RowOf(work, y);
    for (int x = 0; x < work.GetWidth(); ++x) row[x] = std::isfinite(row[x]) ? row[x] - level[x] : 0.0f;
  }
}

// A hot pixel or column leaves one pair of sides dark, left and right or above and below; a star lights both.
bool IsSpike(float const* above, float const* row, float const* below, int x) {
  double const besides = (above[x - 1] + row[x - 1] + below[x - 1] + above[x + 1] + row[x + 1] + below[x + 1]) / 6.0;
  double const aboveBelow = (above[x - 1] + above[x] + above[x + 1] + below[x - 1] + below[x] + below[x + 1]) / 6.0;
  return std::min(besides, aboveBelow) < kSpikeSides * row[x];
}

float MedianOfNeighbours(float const* above, float const* row, float const* below, int x) {
  std::array<float, 8> near = {above[x - 1], above[x],     above[x + 1], row[x - 1],
                               row[x + 1],   below[x - 1], below[x],     below[x + 1]};
  std::nth_element(near.begin(), near.begin() + 4, near.end());
  return near[4];
}

struct Spike {
  int x;
  int y;
  float mended;
};

// All are found before one is mended, so that no spike is judged by a mended neighbour.
void RemoveSpikes(COrbImage& work, SkyMap const& sky) {
  std::vector<Spike> spikes;
  std::vector<float> noise(work.GetWidth());
  for (int y = 1; y < work.GetHeight() - 1; ++y) {
    sky.NoiseRow(y, noise.data());
    float const* above = RowOf(work, y - 1);
    float const* row = RowOf(work, y);
    float const* below = RowOf(work, y + 1);
    for (int x = 1; x < work.GetWidth() - 1; ++x) {
      if (!(row[x] > kSpikeNoise * noise[x]) || !IsSpike(above, row, below, x)) continue;
      spikes.push_back(Spike{x, y, MedianOfNeighbours(above, row, below, x)});
    }
  }
  for (Spike const& spike : spikes) RowOf(work, spike.y)[spike.x] = spike.mended;
}

// Weights 1 4 6 4 1 over 16.
float Binomial(float a, float b, float c, float d, float e) { return ((a + e) + 4.0f * (b + d) + 6.0f * c) / 16.0f; }

// One pass over columns and rows.
COrbImage SmoothOnce(COrbImage const& image) {
  int const width = image.GetWidth();
  int const height = image.GetHeight();
  COrbImage smooth(-32, width, height, 1, 1.0, 0.0, 1, nullptr, nullptr);
  smooth.SetLevel(0, 0.0, 255.0);
  std::vector<float> held(width + 4);  // the row with two samples more on either side
  for (int y = 0; y < height; ++y) {
    std::array<float const*, 5> rows;
    for (int k = 0; k < 5; ++k) rows[k] = RowOf(image, std::clamp(y + k - 2, 0, height - 1));
    for (int x = 0; x < width; ++x) held[x + 2] = Binomial(rows[0][x], rows[1][x], rows[2][x], rows[3][x], rows[4][x]);
    held[0] = held[1] = held[2];
    held[width + 2] = held[width + 3] = held[width + 1];
    float* out = RowOf(smooth, y);
    for (int x = 0; x < width; ++x) out[x] = Binomial(held[x], held[x + 1], held[x + 2], held[x + 3], held[x + 4]);
  }
  return smooth;
}

}  // namespace

COrbImage CleanFrame(COrbImage const& image, int cellSide) {
  COrbImage work = JoinPlanes(image);
  SkyMap const sky = MapSky(work, cellSide);
  SubtractSky(work, sky);
  RemoveSpikes(work, sky);
  return work;
}

COrbImage SmoothFrame(COrbImage const& image, int passes) {
  COrbImage smooth(image);
  for (int pass = 0; pass < passes; ++pass) {
    COrbImage next = SmoothOnce(smooth);
    smooth.Swap(&next);
  }
  return smooth;
}

SkyMap MapSky(COrbImage const& image, int cellSide) {
  return SkyMap(RowOf(image, 0), image.GetWidth(), image.GetHeight(), cellSide);
}

}  // namespace orb::host
