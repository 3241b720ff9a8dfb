// Rows whose columns each read a cell of their own anywhere in a plane: bilinear, bit for bit as the single sample.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

#include <orbimg/core/row_kernel.h>

namespace orb {

// Where the cells of a plane lie, for columns that find theirs one by one.
struct PlaneShape {
  int width;
  int height;

  int LastColumnCell() const { return std::max(width - 2, 0); }
  int LastRowCell() const { return std::max(height - 2, 0); }
  std::ptrdiff_t NextColumn() const { return width > 1 ? 1 : 0; }
  std::ptrdiff_t NextRow() const { return height > 1 ? width : 0; }
};

// Two samples beside each other, which are read and written as one.
struct Neighbours {
  float left;
  float right;
};

// A plane, where the cells of a row's columns begin in it, and how far from there the rest of a cell lies.
struct CellsOfRow {
  float const* samples;
  std::ptrdiff_t const* offsets;
  std::ptrdiff_t nextColumn;  // 0 or 1
  std::ptrdiff_t nextRow;
  std::ptrdiff_t ahead;  // what is asked for beforehand

  // The cells of `count` columns from `first` on.
  void Gather(std::ptrdiff_t first, std::ptrdiff_t count, Neighbours* above, Neighbours* below) const {
    if (nextColumn == 0) {
      for (std::ptrdiff_t i = 0; i < count; ++i) {
        float const* const a = samples + offsets[first + i];
        above[i] = Neighbours{a[0], a[0]};
        below[i] = Neighbours{a[nextRow], a[nextRow]};
      }
      return;
    }
    for (std::ptrdiff_t i = 0; i < count; ++i) {
      float const* const a = samples + offsets[first + i];
      std::memcpy(&above[i], a, sizeof(Neighbours));
      std::memcpy(&below[i], a + nextRow, sizeof(Neighbours));
    }
  }

  // A turned row crosses many rows of the plane, too many for the processor to see where the next ones go on. What is
  // asked for may lie beyond the plane, which does no harm.
  void AskAhead(std::ptrdiff_t first, std::ptrdiff_t count) const {
    for (std::ptrdiff_t i = 0; i < count; i += kColumnsPerCacheLine / 2) {
      __builtin_prefetch(samples + offsets[first + i] + ahead, 0);
    }
  }
};

// The values of `count` columns. Neither of a column's fractions is negative, and both are 0 only on a sample.
void InterpolateCellsRow(CellsOfRow const& cells, double const* fractionX, double const* fractionY,
                         std::ptrdiff_t count, float* out);
void InterpolateCellsRow(CellsOfRow const& cells, double const* fractionX, double const* fractionY,
                         std::ptrdiff_t count, double* out);

}  // namespace orb
