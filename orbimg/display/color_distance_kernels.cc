#include <orbimg/display/color_distance_kernels.h>

#include <algorithm>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

ORB_ROW_KERNEL void LowerNearestRow(int const* __restrict reds, int const* __restrict greens,
                                    int const* __restrict blues, int* __restrict nearest, std::ptrdiff_t count, int red,
                                    int green, int blue, int index) {
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    int const r = reds[i] - red;
    int const g = greens[i] - green;
    int const b = blues[i] - blue;
    int const key = (r * r + g * g + b * b) * 256 + index;
    nearest[i] = key < nearest[i] ? key : nearest[i];
  }
}

ORB_ROW_KERNEL int GreatestOf(int const* values, std::ptrdiff_t count) {
  int greatest = 0;
  for (std::ptrdiff_t i = 0; i < count; ++i) greatest = values[i] > greatest ? values[i] : greatest;
  return greatest;
}

}  // namespace

void LowerNearest(ColorList& colors, int red, int green, int blue, int index) {
  LowerNearestRow(colors.red.data(), colors.green.data(), colors.blue.data(), colors.nearest.data(), colors.Size(), red,
                  green, blue, index);
}

std::ptrdiff_t FindFarthest(ColorList const& colors, int limit) {
  int const farthest = std::min(GreatestOf(colors.nearest.data(), colors.Size()) / 256, limit);
  if (farthest == 0) return -1;
  auto const found =
      std::find_if(colors.nearest.begin(), colors.nearest.end(), [&](int key) { return key / 256 >= farthest; });
  return found - colors.nearest.begin();
}

}  // namespace orb
