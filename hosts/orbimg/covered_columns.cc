#include <hosts/orbimg/covered_columns.h>

#include <algorithm>

namespace orb::host {
namespace {

// The columns where a test holds that changes at most once along the line.
template <typename Test>
ColumnRange Where(int width, Test test) {
  bool const atFirst = test(0);
  bool const atLast = test(width - 1);
  if (atFirst == atLast) return atFirst ? ColumnRange{0, width} : ColumnRange{0, 0};
  int same = 0;  // as the first column; the change lies between
  int other = width - 1;
  while (other - same > 1) {
    int const middle = same + (other - same) / 2;
    (test(middle) == atFirst ? same : other) = middle;
  }
  return atFirst ? ColumnRange{0, other} : ColumnRange{other, width};
}

}  // namespace

// A coordinate in the frame rises or falls along the line, also as it is rounded, so each bound is passed once.
ColumnRange FindCoveredColumns(RigidMap const& map, Shape const& frame, int y, int width) {
  auto const at = [&](int x) { return map.ToFrame(Position{static_cast<double>(x), static_cast<double>(y)}); };
  ColumnRange range{0, width};
  auto const limit = [&range](ColumnRange const& other) {
    range.begin = std::max(range.begin, other.begin);
    range.end = std::min(range.end, other.end);
  };
  limit(Where(width, [&](int x) { return at(x).x >= 0.0; }));
  limit(Where(width, [&](int x) { return at(x).x < frame.width; }));
  limit(Where(width, [&](int x) { return at(x).y >= 0.0; }));
  limit(Where(width, [&](int x) { return at(x).y < frame.height; }));
  return range.begin < range.end ? range : ColumnRange{};
}

}  // namespace orb::host
