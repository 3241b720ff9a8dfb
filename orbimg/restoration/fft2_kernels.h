// The rows and columns that the transforms of real images join, part and mirror.
//
// Complex values are pairs of floats. `n` is the number of points of a line; frequency n - k mirrors frequency k.
#pragma once

#include <cstddef>

namespace orb {

// Columns that are transformed together: 16 complex values are two cache lines of each row.
inline constexpr int kColumnBlock = 16;

// line[x] = (a[x], b[x]); without `b` the imaginary parts are 0.
void JoinRealRows(float const* a, float const* b, std::ptrdiff_t n, float* line);

// From the spectrum of a + i b, for real a and b, those of each, for frequencies 0 .. n/2. `b` may be null.
void PartSpectra(float const* line, std::ptrdiff_t n, float* a, float* b);

// From the frequencies 0 .. n/2 of the spectra of real a and b to all of the spectrum of a + i b. `b` may be null.
void JoinSpectra(float const* a, float const* b, std::ptrdiff_t n, float* line);

// a[x] = re of line[x], b[x] = im. `b` may be null.
void PartRealRows(float const* line, std::ptrdiff_t n, float* a, float* b);

// The columns left .. left + count - 1 of a spectrum, at most kColumnBlock of them.
struct ColumnBlock {
  float* spectrum;
  std::ptrdiff_t nx;
  std::ptrdiff_t ny;
  std::ptrdiff_t left;
  std::ptrdiff_t count;
  float* lines;
  std::ptrdiff_t lineStride;  // floats from one line to the next

  float* Row(std::ptrdiff_t y) const { return spectrum + 2 * nx * y; }
  std::ptrdiff_t MirrorRow(std::ptrdiff_t y) const { return y == 0 ? 0 : ny - y; }
  std::ptrdiff_t MirrorColumn(std::ptrdiff_t x) const { return x == 0 ? 0 : nx - x; }
};

// From columns to lines.
void GatherColumns(ColumnBlock const& block);
// The same of the mean of each value and its mirror's conjugate: the part whose inverse is real.
void GatherSymmetricColumns(ColumnBlock const& block);
// From lines to columns.
void ScatterColumns(ColumnBlock const& block);
// From lines to columns, and to their mirrors, conjugate.
void ScatterWithMirrors(ColumnBlock const& block);

// Both parts of `n` values.
void DivideLine(float* line, std::ptrdiff_t n, double divisor);

}  // namespace orb
