#include <orbimg/measure/aperture_mark.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <orbimg/core/truncate.h>

namespace {

constexpr double kLargestRadius = 302.0;
constexpr int kNothing = -1;

// Beyond this a hole's radius has no effect of its own: even where a circle of it is squeezed flat, its outermost row
// is longer than half of any aperture.
constexpr int kLargestHole = 1 << 17;

// Points by distance from the centre, into the two outlines of an ellipse. Points beyond the outlines' ends, which a
// hole larger than its aperture has, are of no use.
class Outlines {
 public:
  Outlines(std::vector<int>& rowOutline, std::vector<int>& columnOutline) : row(rowOutline), column(columnOutline) {}

  void Add(std::int64_t x, std::int64_t y) {
    Raise(row, y, x);
    Raise(column, x, y);
  }

 private:
  static void Raise(std::vector<int>& outline, std::int64_t at, std::int64_t distance) {
    if (at < 0 || at >= static_cast<std::int64_t>(outline.size())) return;
    int& entry = outline[static_cast<std::size_t>(at)];
    entry = std::max(entry, static_cast<int>(distance));
  }

  std::vector<int>& row;
  std::vector<int>& column;
};

// The eighth of a midpoint circle from (0, r) on, squeezed to the radii p and q. J. E. Bresenham, A linear algorithm
// for incremental digital display of circular arcs, 1977.
void AddEllipse(std::int64_t p, std::int64_t q, Outlines outlines) {
  std::int64_t i = 0;
  std::int64_t j = std::max(p, q);
  std::int64_t e = j;
  if (j == 0) {
    outlines.Add(0, 0);  // also where the other radius is negative, which leaves nothing to divide by
    return;
  }
  while (j >= i) {
    if (p == q) {
      outlines.Add(j, i);
      outlines.Add(i, j);
    } else if (p < q) {
      outlines.Add(j * p / q, i);
      outlines.Add(i * p / q, j);
    } else {
      outlines.Add(j, i * q / p);
      outlines.Add(i, j * q / p);
    }
    e -= 2 * i + 1;
    if (e < 0) {
      e += 2 * j - 2;
      --j;
    }
    ++i;
  }
}

void ClearOutline(std::vector<int>& outline, int radius) {
  outline.assign(static_cast<std::size_t>(std::max(radius + 1, 0)), kNothing);
}

void CapWithHole(double& outer, double& inner) {
  if (!(outer > kLargestRadius)) return;
  inner = kLargestRadius - (outer - inner);
  outer = kLargestRadius;
}

void Cap(double& outer) {
  if (outer > kLargestRadius) outer = kLargestRadius;
}

// From `begin` on, up to but not including `end`.
struct Range {
  std::int64_t begin;
  std::int64_t end;

  bool IsEmpty() const { return begin >= end; }
};

Range Intersect(Range a, Range b) { return Range{std::max(a.begin, b.begin), std::min(a.end, b.end)}; }

Range Around(std::int64_t centre, std::int64_t radius) { return Range{centre - radius, centre + radius + 1}; }

// One side of the box of the rounded measures and of that of the truncated ones, among `size` pixels.
Range BoxSide(double centre, double radius, int size) {
  Range const rounded = Around(orb::TruncateToInt(centre + 0.5), orb::TruncateToInt(radius + 0.5));
  Range const truncated = Around(orb::TruncateToInt(centre), orb::TruncateToInt(radius));
  return Intersect(Range{0, size}, Intersect(rounded, truncated));
}

// Where the shape of an aperture lies in an image: spans of rows, inside a box.
class Spans {
 public:
  Spans(double centreX, double centreY, std::vector<int> const& outer, std::vector<int> const& inner, Range columns,
        Range rows)
      : cx(orb::TruncateToInt(centreX)),
        cy(orb::TruncateToInt(centreY)),
        outerRow(outer),
        innerRow(inner),
        boxColumns(columns),
        boxRows(rows) {}

  // Calls visit(x, y, count), row by row and from left to right; no span is empty.
  template <typename Visit>
  void Each(Visit visit) const {
    auto const visitPart = [&](Range columns, std::int64_t y) {
      Range const part = Intersect(boxColumns, columns);
      if (!part.IsEmpty()) visit(static_cast<int>(part.begin), static_cast<int>(y), part.end - part.begin);
    };
    for (std::int64_t y = boxRows.begin; y < boxRows.end; ++y) {
      auto const dy = static_cast<std::size_t>(std::abs(y - cy));
      std::int64_t const outer = outerRow[dy];
      std::int64_t const inner = innerRow[dy];
      if (inner < 0) {
        visitPart(Around(cx, outer), y);
      } else {
        visitPart(Range{cx - outer, cx - inner}, y);
        visitPart(Range{cx + inner + 1, cx + outer + 1}, y);
      }
    }
  }

 private:
  std::int64_t cx;
  std::int64_t cy;
  std::vector<int> const& outerRow;
  std::vector<int> const& innerRow;
  Range boxColumns;
  Range boxRows;
};

struct Counts {
  std::int64_t num = 0;
  double sum = 0.0;
  double variance = 0.0;
};

// `Sample` is how the store holds a sample.
template <typename Sample>
Counts Measure(COrbImage const& image, Spans const& spans) {
  double const scale = image.GetBscale();
  double const zero = image.GetBzero();
  auto const eachCount = [&](auto visit) {
    spans.Each([&](int left, int y, std::int64_t count) {
      auto const* const samples = reinterpret_cast<Sample const*>(image.GetImageAdr(left, y, 0, 1, nullptr));
      for (std::int64_t i = 0; i < count; ++i) visit(std::trunc(samples[i] * scale + zero));
    });
  };
  Counts found;
  eachCount([&](double v) {
    found.sum += v;
    ++found.num;
  });
  auto const n = static_cast<double>(found.num);
  double const mean = found.sum / n;
  double squares = 0.0;
  eachCount([&](double v) { squares += (v - mean) * (v - mean); });
  found.variance = squares / n;
  return found;
}

Counts MeasureZeros(Spans const& spans) {
  Counts found;
  spans.Each([&](int, int, std::int64_t count) { found.num += count; });
  return found;
}

Counts MeasureAnyFormat(COrbImage const& image, Spans const& spans) {
  bool const isSigned = image.IsSigned() != 0;
  switch (image.GetBitsPixel()) {
    case 8:
      return Measure<std::uint8_t>(image, spans);
    case 16:
      return isSigned ? Measure<std::int16_t>(image, spans) : Measure<std::uint16_t>(image, spans);
    case 32:
      return isSigned ? Measure<std::int32_t>(image, spans) : Measure<std::uint32_t>(image, spans);
    case -32:
      return Measure<float>(image, spans);
    case -64:
      return Measure<double>(image, spans);
    default:
      return MeasureZeros(spans);
  }
}

}  // namespace

CImgApertureMark::~CImgApertureMark() = default;

void CImgApertureMark::Set(COrbImage* image, double cx, double cy, double newOuterX, double newOuterY, double newInnerX,
                           double newInnerY) {
  centreX = cx;
  centreY = cy;
  outerX = newOuterX;
  outerY = newOuterY;
  innerX = newInnerX;
  innerY = newInnerY;
  if (innerX >= 0.0) {
    CapWithHole(outerX, innerX);
  } else {
    Cap(outerX);
  }
  // Intended: the inner radius x tells of the hole here too.
  if (innerX >= 0.0) {
    CapWithHole(outerY, innerY);
  } else {
    Cap(outerY);
  }
  MakeCircleMask();
  CalcPixel(image);
}

int CImgApertureMark::PtInRgn(int x, int y) {
  auto const distance = [](int from, double to) {
    return std::abs(static_cast<std::int64_t>(from) - orb::TruncateToInt(to));
  };
  std::int64_t const dx = distance(x, centreX);
  std::int64_t const dy = distance(y, centreY);
  if (dx > orb::TruncateToInt(outerX) || dy > orb::TruncateToInt(outerY)) return 0;
  if (dx > outerRow[static_cast<std::size_t>(dy)]) return 0;
  return dx > innerRow[static_cast<std::size_t>(dy)] ? 1 : 0;
}

void CImgApertureMark::MakeCircleMask(void) {
  int const a = orb::TruncateToInt(outerX);
  int const b = orb::TruncateToInt(outerY);
  int const c = std::min(orb::TruncateToInt(innerX), kLargestHole);
  int const d = std::min(orb::TruncateToInt(innerY), kLargestHole);
  ClearOutline(outerRow, b);
  ClearOutline(innerRow, b);
  ClearOutline(outerColumn, a);
  ClearOutline(innerColumn, a);
  AddEllipse(a, b, Outlines(outerRow, outerColumn));
  if (c >= 0) AddEllipse(c, d, Outlines(innerRow, innerColumn));
}

void CImgApertureMark::CalcPixel(COrbImage* image) {
  Spans const spans(centreX, centreY, outerRow, innerRow, BoxSide(centreX, outerX, image->GetWidth()),
                    BoxSide(centreY, outerY, image->GetHeight()));
  Counts const counts = MeasureAnyFormat(*image, spans);
  num = static_cast<int>(counts.num);
  sum = counts.sum;
  variance = counts.variance;
  deviation = std::sqrt(variance);
}
