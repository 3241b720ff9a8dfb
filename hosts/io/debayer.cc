#include <hosts/io/debayer.h>

#include <algorithm>

namespace orb::host {

namespace {

constexpr int kLargestRadius = 3;

float MeanAround(Mosaic const& mosaic, int plane, int x, int y) {
  for (int radius = 1; radius <= kLargestRadius; ++radius) {
    double sum = 0.0;
    int count = 0;
    for (int v = std::max(y - radius, 0); v <= std::min(y + radius, mosaic.height - 1); ++v) {
      for (int u = std::max(x - radius, 0); u <= std::min(x + radius, mosaic.width - 1); ++u) {
        if (mosaic.pattern.PlaneAt(u, v) != plane) continue;
        sum += mosaic.At(u, v);
        ++count;
      }
    }
    if (count != 0) return static_cast<float>(sum / count);
  }
  return 0.0f;
}

}  // namespace

void DebayerRow(Mosaic const& mosaic, int plane, int y, float* row) {
  for (int x = 0; x < mosaic.width; ++x) {
    bool const isOwn = mosaic.pattern.PlaneAt(x, y) == plane;
    row[x] = isOwn ? static_cast<float>(mosaic.At(x, y)) : MeanAround(mosaic, plane, x, y);
  }
}

}  // namespace orb::host
