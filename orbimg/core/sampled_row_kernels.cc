#include <orbimg/core/sampled_row_kernels.h>

#include <algorithm>
#include <cmath>

#include <orbimg/core/cell_row_kernels.h>
#include <orbimg/core/level.h>
#include <orbimg/core/row_kernel.h>
#include <orbimg/core/shifted_row_kernels.h>
#include <orbimg/core/truncate.h>

namespace {

// sx = (along x - row x) * scale + cx, sy = cy - (along y + row y) * scale: inside positions, then FindCell without its
// branches. A position held at the last sample has a fraction of 1 in the cell before.
ORB_ROW_KERNEL void LocateRotatedRow(double const* alongX, double const* alongY, double rowX, double rowY, double scale,
                                     double cx, double cy, orb::PlaneShape shape, std::ptrdiff_t count,
                                     double* fractionX, double* fractionY, std::ptrdiff_t* offsets) {
  double const lastX = shape.width - 1;
  double const lastY = shape.height - 1;
  int const lastColumnCell = shape.LastColumnCell();
  int const lastRowCell = shape.LastRowCell();
  std::ptrdiff_t const width = shape.width;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const sx = (alongX[i] - rowX) * scale + cx;
    double const sy = cy - (alongY[i] + rowY) * scale;
    double const x = sx < lastX ? sx : lastX;
    double const y = sy < lastY ? sy : lastY;
    int const column = std::min(static_cast<int>(x), lastColumnCell);
    int const row = std::min(static_cast<int>(y), lastRowCell);
    fractionX[i] = x - column;
    fractionY[i] = y - row;
    offsets[i] = row * width + column;
  }
}

ORB_ROW_KERNEL void To256Row(double* values, std::ptrdiff_t count, orb::Level level) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) values[i] = level.To256(values[i]);
}

ORB_ROW_KERNEL void BrightnessRow(double const* r, double const* g, double const* b, std::ptrdiff_t count,
                                  double* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) out[i] = orb::Brightness(r[i], g[i], b[i]);
}

ORB_ROW_KERNEL void RoundRow(double const* values, std::ptrdiff_t count, float* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) out[i] = static_cast<float>(values[i]);
}

bool Lies(double position, int size) { return position >= 0.0 && position < size; }

// The first column for which `holds` is true, where it is false up to some column and true from there on.
template <typename Condition>
std::ptrdiff_t FirstColumn(std::ptrdiff_t count, Condition holds) {
  std::ptrdiff_t low = 0;
  std::ptrdiff_t high = count;
  while (low < high) {
    std::ptrdiff_t const middle = low + (high - low) / 2;
    if (holds(middle)) {
      high = middle;
    } else {
      low = middle + 1;
    }
  }
  return low;
}

struct ColumnInterval {
  std::ptrdiff_t begin;
  std::ptrdiff_t end;
};

// The columns whose coordinate lies in 0 <= v < size. Rounding keeps the order of sums, differences and products with a
// constant, so the coordinate never turns back along a row, and one that is not a number is so in all columns.
template <typename Coordinate>
ColumnInterval InsideColumns(std::ptrdiff_t count, int size, bool rising, Coordinate at) {
  auto const isFrom0 = [&](std::ptrdiff_t i) { return at(i) >= 0.0; };
  auto const isBelowSize = [&](std::ptrdiff_t i) { return at(i) < size; };
  if (rising) {
    return ColumnInterval{FirstColumn(count, isFrom0), FirstColumn(count, [&](auto i) { return !isBelowSize(i); })};
  }
  return ColumnInterval{FirstColumn(count, isBelowSize), FirstColumn(count, [&](auto i) { return !isFrom0(i); })};
}

}  // namespace

namespace orb {

// How many rows beforehand the memory of a turned image is asked for.
constexpr double kRowsAhead = 4.0;

SampledRow::SampledRow(COrbImage& image, int left, int right, double dx, double dy, double sinA, double cosA,
                       double scale)
    : source(image),
      transform{dx, dy, sinA, cosA, scale, image.GetStdCtr().fx, image.GetStdCtr().fy},
      isShift(transform.IsShift()),
      count(right > left ? static_cast<std::ptrdiff_t>(right) - left : 0) {
  std::size_t const columns = At(count);
  alongX.resize(columns);
  fractionX.resize(columns);
  for (auto& buffer : scratch) buffer.resize(columns);
  if (isShift) {
    PrepareShift(left);
  } else {
    PrepareRotation(left);
  }
}

// The rounding of x - dx, and so its fraction, is mostly the same from one power of two to the next: such columns make
// a run of their own, but for short ones, which are not worth it.
bool ColumnRun::GoesOn(std::ptrdiff_t column, CellPosition const& position) const {
  constexpr std::ptrdiff_t kShort = 64;
  if (whole != position.whole || cell + (column - begin) != position.cell) return false;
  return column - begin < kShort || (even && fraction == position.fraction);
}

// The cell of a column is that of its neighbour plus one, but where the last column is held, and where x - dx rounds up
// to a whole number because dx is a hair above one: a new run begins there.
void SampledRow::PrepareShift(int left) {
  int const width = source.GetWidth();
  for (std::ptrdiff_t i = 0; i < count; ++i) alongX[At(i)] = left + i - transform.dx;
  auto const [first, last] = InsideColumns(count, width, true, [&](std::ptrdiff_t i) { return alongX[At(i)]; });
  shiftBegin = first;
  shiftEnd = std::max(first, last);
  for (std::ptrdiff_t i = shiftBegin; i < shiftEnd; ++i) {
    CellPosition const column = FindCell(alongX[At(i)], width);
    fractionX[At(i)] = column.fraction;
    if (runs.empty() || !runs.back().GoesOn(i, column)) {
      runs.push_back(ColumnRun{i, i, column.cell, column.fraction, column.whole, true});
    }
    ColumnRun& run = runs.back();
    run.even = run.even && run.fraction == column.fraction;
    run.end = i + 1;
  }
}

void SampledRow::PrepareRotation(int left) {
  alongY.resize(At(count));
  fractionY.resize(At(count));
  offsets.resize(At(count));
  // One row further down here is sinA columns and cosA rows further in the source, times the scale. Where that is
  // large, hardly a position lies inside.
  double const rows = kRowsAhead * std::clamp(transform.scale, -4.0, 4.0);
  ahead = static_cast<std::ptrdiff_t>(TruncateToInt(std::round(rows * transform.cosA))) * source.GetWidth() +
          TruncateToInt(std::round(rows * transform.sinA));
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const p = left + i - transform.cx - transform.dx;
    alongX[At(i)] = p * transform.cosA;
    alongY[At(i)] = p * transform.sinA;
  }
}

void SampledRow::Locate(int y) {
  if (!isShift) {
    LocateRotated(y);
    return;
  }
  rowY = y - transform.dy;
  bool const inside = Lies(rowY, source.GetHeight());
  begin = inside ? shiftBegin : 0;
  end = inside ? shiftEnd : 0;
  if (inside) row = FindCell(rowY, source.GetHeight());
}

void SampledRow::LocateRotated(int y) {
  double const q = transform.cy - y + transform.dy;
  rowX = q * transform.sinA;
  rowY = q * transform.cosA;
  PlaneShape const shape{source.GetWidth(), source.GetHeight()};
  double const scale = transform.scale;
  ColumnInterval const x =
      InsideColumns(count, shape.width, transform.cosA * scale >= 0.0, [&](std::ptrdiff_t i) { return PositionX(i); });
  ColumnInterval const v =
      InsideColumns(count, shape.height, transform.sinA * scale < 0.0, [&](std::ptrdiff_t i) { return PositionY(i); });
  begin = std::max(x.begin, v.begin);
  end = std::max(begin, std::min(x.end, v.end));
  LocateRotatedRow(alongX.data() + begin, alongY.data() + begin, rowX, rowY, scale, transform.cx, transform.cy, shape,
                   end - begin, fractionX.data() + begin, fractionY.data() + begin, offsets.data() + begin);
}

template <typename Sample>
void SampledRow::SampleShifted(float const* samples, Sample* out) const {
  PlaneShape const shape{source.GetWidth(), source.GetHeight()};
  float const* const a = samples + static_cast<std::ptrdiff_t>(row.cell) * shape.width;
  float const* const b = a + shape.NextRow();
  for (ColumnRun const& run : runs) {
    if (run.whole && row.whole) {
      std::copy(a + run.cell, a + run.cell + (run.end - run.begin), out + run.begin);
      continue;
    }
    orb::RowPair const pair{a + run.cell, a + run.cell + shape.NextColumn(), b + run.cell,
                            b + run.cell + shape.NextColumn()};
    if (run.even) {
      orb::InterpolateEvenRunRow(pair, run.fraction, row.fraction, run.end - run.begin, out + run.begin);
      continue;
    }
    orb::InterpolateRunRow(pair, fractionX.data() + run.begin, row.fraction, run.end - run.begin, out + run.begin);
  }
}

template <typename Sample>
void SampledRow::SampleInside(int plane, Sample* out) const {
  if (begin == end) return;
  float const* const samples = source.GetImageAdr(0, 0, StoredPlane(plane), 1, nullptr);
  if (isShift) {
    SampleShifted(samples, out);
    return;
  }
  PlaneShape const shape{source.GetWidth(), source.GetHeight()};
  CellsOfRow const cells{samples, offsets.data() + begin, shape.NextColumn(), shape.NextRow(), ahead};
  InterpolateCellsRow(cells, fractionX.data() + begin, fractionY.data() + begin, end - begin, out + begin);
}

void SampledRow::SampleInside256f(int plane, double* out) const {
  SampleInside(plane, out);
  To256Row(out + begin, end - begin, LevelOf(source, StoredPlane(plane)));
}

template <typename SamplePlane>
void SampledRow::BrightnessInside(SamplePlane samplePlane, double* out) {
  for (int p = 0; p < 3; ++p) samplePlane(p, scratch[p].data());
  BrightnessRow(scratch[0].data() + begin, scratch[1].data() + begin, scratch[2].data() + begin, end - begin,
                out + begin);
}

template <typename Sample>
void SampledRow::FillOutside(double outside, Sample* out) const {
  std::fill(out, out + begin, static_cast<Sample>(outside));
  std::fill(out + end, out + count, static_cast<Sample>(outside));
}

void SampledRow::SampleDouble(int plane, double outside, double* out) {
  if (IsBrightness(plane)) {
    BrightnessInside([this](int p, double* values) { SampleInside(p, values); }, out);
  } else {
    SampleInside(plane, out);
  }
  FillOutside(outside, out);
}

void SampledRow::SampleDouble256f(int plane, double outside, double* out) {
  if (IsBrightness(plane)) {
    BrightnessInside([this](int p, double* values) { SampleInside256f(p, values); }, out);
  } else {
    SampleInside256f(plane, out);
  }
  FillOutside(outside, out);
}

void SampledRow::SampleRaw(int plane, double outside, float* out) {
  if (IsBrightness(plane)) {
    SampleDouble(plane, outside, scratch[0].data());
    RoundRow(scratch[0].data(), count, out);
  } else {
    SampleInside(plane, out);
    FillOutside(outside, out);
  }
}

void SampledRow::Sample256f(int plane, double outside, float* out) {
  SampleDouble256f(plane, outside, scratch[0].data());
  RoundRow(scratch[0].data(), count, out);
}

}  // namespace orb
