// Rows of an image that is sampled on a grid of columns and rows: bilinear, bit for bit as the single sample.
#pragma once

#include <cstddef>
#include <vector>

#include <orbimg/core/bilinear_internal.h>
#include <orbimg/core/orb_image.h>

namespace orb {

// The columns of the grid: where each reads in a row of the source.
class GridColumns {
 public:
  GridColumns(std::vector<double> const& positions, int sourceWidth);

  std::ptrdiff_t Count() const { return static_cast<std::ptrdiff_t>(cells.size()); }
  // Between the two neighbours of each column, unrounded.
  void InterpolateRow(float const* row, double* out) const;
  // The samples of the columns that lie on one; the others stay.
  void PickRow(float const* row, float* out) const;
  bool AreWhole() const { return wholeColumns.size() == cells.size(); }

 private:
  std::vector<int> cells;
  std::vector<double> fractions;
  std::ptrdiff_t next;            // from a cell's first sample to its second
  std::vector<int> wholeColumns;  // those that lie on a sample
};

// One plane, row after row of the grid. What was interpolated along a row of the source is kept for the next rows of
// the grid, which mostly lie between the same two.
class GridRows {
 public:
  GridRows(COrbImage const& initSource, GridColumns const& initColumns, int initPlane);

  // The row of the grid at `position` of the source.
  void Sample(CellPosition const& position, float* out);

 private:
  struct Line {
    int row = -1;
    std::vector<double> values;
  };

  float const* RowOf(int y) const { return source.GetImageAdr(0, y, plane, 1, nullptr); }
  void Keep(int row, Line& line);

  COrbImage const& source;
  GridColumns const& columns;
  int plane;
  Line above;
  Line below;
};

}  // namespace orb
