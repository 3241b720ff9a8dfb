#include <hosts/orbimg/row_range.h>

#include <algorithm>
#include <cmath>

namespace orb::host {
namespace {
constexpr double kMarginAbove = 2.0;  // rows: the row above a position, and one for rounding
constexpr double kMarginBelow = 3.0;  // rows: one past the end, the row below a position, and one for rounding
}  // namespace

RowRange FindRowsToRead(FrameTransform const& transform, int frameHeight, int width, RowRange const& band) {
  RigidMap const map(transform);
  double highest = HUGE_VAL;
  double lowest = -HUGE_VAL;
  for (int const x : {0, width - 1}) {
    for (int const y : {band.top, band.bottom - 1}) {
      double const row = map.ToFrame(Position{static_cast<double>(x), static_cast<double>(y)}).y;
      highest = std::min(highest, row);
      lowest = std::max(lowest, row);
    }
  }
  auto const limit = static_cast<double>(frameHeight);
  RowRange rows;
  rows.top = static_cast<int>(std::clamp(std::floor(highest) - kMarginAbove, 0.0, limit));
  rows.bottom = static_cast<int>(std::clamp(std::floor(lowest) + kMarginBelow, 0.0, limit));
  return rows;
}

}  // namespace orb::host
