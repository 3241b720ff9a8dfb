// The bilinear sample, unrounded: the one rule behind every form that takes two floating coordinates.
#pragma once

#include <orbimg/core/orb_image.h>

namespace orb {

// One coordinate of a bilinear sample: the cell it falls in and the fraction inside.
struct CellPosition {
  int cell;
  double fraction;
  bool whole;  // on the cell's first sample
};

// Held at size - 1, in the cell before it with a fraction of 1: the last sample comes out of the interpolation. On a
// side of one sample every position is that sample.
inline CellPosition FindCell(double position, int size) {
  if (position >= size - 1) {
    int const cell = size > 1 ? size - 2 : 0;
    return CellPosition{cell, static_cast<double>(size - 1) - cell, size == 1};
  }
  // A position below the first sample, or one that is not a number, must not lead out of the image.
  int const cell = position > 0.0 ? static_cast<int>(position) : 0;
  return CellPosition{cell, position - cell, cell == position};
}

// a is the upper pair of samples, b the lower; f the fraction of the column, g that of the row.
inline double InterpolateCell(double a0, double a1, double b0, double b1, double f, double g) {
  return (a1 * f + a0 * (1 - f)) * (1 - g) + (b1 * f + b0 * (1 - f)) * g;
}

// The stored sample at whole coordinates. A side of one sample stands for its own neighbour.
inline double Bilinear(COrbImage const& image, double x, double y, int plane) {
  CellPosition const column = FindCell(x, image.GetWidth());
  CellPosition const row = FindCell(y, image.GetHeight());
  float const* a = image.GetImageAdr(column.cell, row.cell, plane, 1, nullptr);
  if (column.whole && row.whole) return a[0];
  float const* b = image.GetImageAdr(column.cell, row.cell + (image.GetHeight() > 1 ? 1 : 0), plane, 1, nullptr);
  int const next = image.GetWidth() > 1 ? 1 : 0;
  return InterpolateCell(a[0], a[next], b[0], b[next], column.fraction, row.fraction);
}

}  // namespace orb
