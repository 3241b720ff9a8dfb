#include <orbimg/filters/contour_kernels.h>

#include <orbimg/core/row_kernel.h>
#include <orbimg/core/truncate.h>

namespace orb {

namespace {

constexpr double kFirstPoint = -0.666666;  // pixels from the sample
constexpr double kPointDistance = 0.333333;
constexpr float kCellShare = 0.11111111f;

[[gnu::always_inline]] inline float StepOf(float v, StepScale const& scale) {
  double steps = static_cast<double>(v) * static_cast<double>(scale.factor);
  if (scale.isHeld) {
    if (steps <= 0.0) steps = 0.0;
    if (steps >= scale.most) steps = scale.most;
  }
  return static_cast<float>(TruncateToInt(steps));
}

[[gnu::always_inline]] inline float Differ(float a, float b) { return a != b ? 1.0f : 0.0f; }

}  // namespace

ORB_ROW_KERNEL void StepsOfPlaneRow(float const* samples, std::ptrdiff_t count, Level level, StepScale const& scale,
                                    float* steps) {
  StepScale const s = scale;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) steps[x] = StepOf(static_cast<float>(level.To256(samples[x])), s);
}

ORB_ROW_KERNEL void StepsOfColourRow(float const* r, float const* g, float const* b, std::ptrdiff_t count,
                                     Level const levels[3], StepScale const& scale, float* steps) {
  StepScale const s = scale;
  Level const red = levels[0];
  Level const green = levels[1];
  Level const blue = levels[2];
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    double const v = Brightness(red.To256(r[x]), green.To256(g[x]), blue.To256(b[x]));
    steps[x] = StepOf(static_cast<float>(v), s);
  }
}

// Intended: the points are reached by repeated addition, which leaves the third just short of many samples.
GridShare GridShareAt(int coordinate) {
  double place = coordinate + kFirstPoint;
  place += kPointDistance;
  place += kPointDistance;
  return TruncateToInt(place) < coordinate ? GridShare{2.0f, 0.0f} : GridShare{1.0f, 1.0f};
}

// With A B above C D, D the sample: a cell whose corners see one row twice counts a change along it four times, one
// that sees one column twice counts a change along that twice, and the cell in the midst compares all but A with C and
// B with D. Beyond the left and the upper edge both neighbours are the same pixel.
ORB_ROW_KERNEL void CountChangesRow(float const* above, float const* row, std::ptrdiff_t count, GridShare rowShare,
                                    float const* columnsBefore, float const* columnsOn, float* counts) {
  float const onAbove = 4.0f * rowShare.before;
  float const onRow = 4.0f * rowShare.on;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    float const a = above[x];
    float const b = above[x + 1];
    float const c = row[x];
    float const d = row[x + 1];
    counts[x] = (onAbove + 1.0f) * Differ(a, b) + (onRow + 1.0f) * Differ(c, d) +
                2.0f * (columnsBefore[x] * Differ(a, c) + columnsOn[x] * Differ(b, d)) + Differ(b, c) + Differ(a, d);
  }
}

ORB_ROW_KERNEL void DrawContourRow(float const* counts, std::ptrdiff_t count, Level level, float* dst) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    // Order fixed: a float before it comes to the levels.
    float const v = 255.0f * counts[x] * kCellShare;
    dst[x] = static_cast<float>(level.ToRaw(v));
  }
}

}  // namespace orb
