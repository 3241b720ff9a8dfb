#include <tests/reference/disk_rank_reference.h>

#include <algorithm>
#include <compare>

namespace orb::test::reference {

void SortSamples(std::vector<float>& samples) {
  std::sort(samples.begin(), samples.end(), [](float a, float b) { return std::strong_order(a, b) < 0; });
}

bool IsUnderDisk(int dx, int dy, double range) { return dx * dx + dy * dy <= range * range; }

int CountUnderDisk(int radius, double range) {
  int count = 0;
  for (int dy = -radius; dy <= radius; ++dy) {
    for (int dx = -radius; dx <= radius; ++dx) count += IsUnderDisk(dx, dy, range) ? 1 : 0;
  }
  return count;
}

std::vector<float> SamplesUnderDisk(COrbImage& image, int x, int y, int plane, int radius, double range) {
  int const height = image.GetHeight();
  std::vector<float> samples;
  for (int dy = -radius; dy <= radius; ++dy) {
    int row = y + dy;
    if (row < 0) {
      row = -row;
    } else if (row >= height) {
      row = 2 * height - row - 1;
    }
    row = std::clamp(row, 0, height - 1);
    for (int dx = -radius; dx <= radius; ++dx) {
      if (!IsUnderDisk(dx, dy, range)) continue;
      samples.push_back(image.GetPixelGrayRaw(std::clamp(x + dx, 0, image.GetWidth() - 1), row, plane));
    }
  }
  SortSamples(samples);
  return samples;
}

float MedianUnderUpperHalf(COrbImage& image, int x, int y, int plane, int radius, double range) {
  std::vector<float> samples;
  for (int dy = -radius; dy <= radius; ++dy) {
    for (int dx = -radius; dx <= radius; ++dx) {
      if (!IsUnderDisk(dx, dy, range)) continue;
      if (x + dx < 0 || x + dx >= image.GetWidth() || y + dy < 0 || y + dy >= image.GetHeight()) continue;
      samples.push_back(dy > 0 ? 0.0f : image.GetPixelGrayRaw(x + dx, y + dy, plane));
    }
  }
  if (samples.empty()) return 0.0f;
  SortSamples(samples);
  return samples[samples.size() / 2];
}

}  // namespace orb::test::reference
