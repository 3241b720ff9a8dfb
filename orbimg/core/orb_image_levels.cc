// Setting and enforcing the level pairs.
#include <orbimg/core/operator_run.h>
#include <orbimg/core/orb_image.h>

namespace {

constexpr int kAllPlanes = -1;

ORB_ROW_KERNEL void ClipRow(float* row, std::ptrdiff_t count, double min, double max) {
  float const low = static_cast<float>(min);
  float const high = static_cast<float>(max);
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    double const v = row[x];
    float const atMost = v > max ? high : row[x];
    row[x] = v < min ? low : atMost;
  }
}

}  // namespace

void COrbImage::SetLevel(int plane, double min, double max) {
  if (plane != kAllPlanes || !IsColor()) {
    CImage::SetLevel(plane == kAllPlanes ? 0 : plane, min, max);
    return;
  }
  // Intended: the lower fraction comes from the minima, the upper from the maxima, both over plane 0's old range.
  double const t = (min - levelMin[0]) / levelRange[0];
  double const u = (max - levelMax[0]) / levelRange[0];
  CImage::SetLevel(0, min, max);
  for (int p = 1; p < planes; ++p) {
    CImage::SetLevel(p, levelRange[p] * t + levelMin[p], levelRange[p] * u + levelMax[p]);
  }
}

void COrbImage::CutOutOfLevel() {
  for (int p = 0; p < planes; ++p) {
    for (int y = 0; y < height; ++y) ClipRow(GetImageAdr(0, y, p, 0, nullptr), width, levelMin[p], levelMax[p]);
  }
}
