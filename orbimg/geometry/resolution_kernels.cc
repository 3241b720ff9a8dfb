#include <orbimg/geometry/resolution_kernels.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include <orbimg/core/cell_row_kernels.h>
#include <orbimg/core/row_kernel.h>

namespace {

// Columns that are gathered before they are interpolated, so that only the gathering goes column by column.
constexpr std::ptrdiff_t kBlock = 64;

ORB_ROW_KERNEL void InterpolateColumnsRow(float const* row, int const* cells, std::ptrdiff_t next,
                                          double const* fractions, std::ptrdiff_t count, double* out) {
  orb::Neighbours pairs[kBlock];
  for (std::ptrdiff_t first = 0; first < count; first += kBlock) {
    std::ptrdiff_t const n = std::min(kBlock, count - first);
    if (next == 1) {
      for (std::ptrdiff_t i = 0; i < n; ++i) std::memcpy(&pairs[i], row + cells[first + i], sizeof(orb::Neighbours));
    } else {
      for (std::ptrdiff_t i = 0; i < n; ++i) pairs[i] = orb::Neighbours{row[cells[first + i]], row[cells[first + i]]};
    }
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t i = 0; i < n; ++i) {
      double const f = fractions[first + i];
      out[first + i] = pairs[i].right * f + pairs[i].left * (1 - f);
    }
  }
}

ORB_ROW_KERNEL void BlendRow(double const* above, double const* below, double g, std::ptrdiff_t count, float* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) out[i] = static_cast<float>(above[i] * (1 - g) + below[i] * g);
}

}  // namespace

namespace orb {

GridColumns::GridColumns(std::vector<double> const& positions, int sourceWidth) : next(sourceWidth > 1 ? 1 : 0) {
  cells.reserve(positions.size());
  fractions.reserve(positions.size());
  for (double const position : positions) {
    CellPosition const found = FindCell(position, sourceWidth);
    if (found.whole) wholeColumns.push_back(static_cast<int>(cells.size()));
    cells.push_back(found.cell);
    fractions.push_back(found.fraction);
  }
}

void GridColumns::InterpolateRow(float const* row, double* out) const {
  InterpolateColumnsRow(row, cells.data(), next, fractions.data(), Count(), out);
}

void GridColumns::PickRow(float const* row, float* out) const {
  if (AreWhole()) {
    for (std::ptrdiff_t i = 0; i < Count(); ++i) out[i] = row[cells[static_cast<std::size_t>(i)]];
    return;
  }
  for (int const column : wholeColumns) out[column] = row[cells[static_cast<std::size_t>(column)]];
}

GridRows::GridRows(COrbImage const& initSource, GridColumns const& initColumns, int initPlane)
    : source(initSource), columns(initColumns), plane(initPlane) {
  auto const count = static_cast<std::size_t>(columns.Count());
  above.values.resize(count);
  below.values.resize(count);
}

void GridRows::Keep(int row, Line& line) {
  if (line.row == row) return;
  columns.InterpolateRow(RowOf(row), line.values.data());
  line.row = row;
}

void GridRows::Sample(CellPosition const& position, float* out) {
  int const nextRow = position.cell + (source.GetHeight() > 1 ? 1 : 0);
  if (!position.whole || !columns.AreWhole()) {
    if (below.row == position.cell) std::swap(above, below);
    Keep(position.cell, above);
    Keep(nextRow, below);
    BlendRow(above.values.data(), below.values.data(), position.fraction, columns.Count(), out);
  }
  // A sample itself may differ from what comes out of its interpolation, which its neighbours can spoil.
  if (position.whole) columns.PickRow(RowOf(position.cell), out);
}

}  // namespace orb
