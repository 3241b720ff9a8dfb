// CImgMatching: the shift that lays a second image over this one, by exhaustive search of a mean squared difference.
//
// The operator object is the reference image and is only read, as is the source. Shift (dx, dy) compares reference
// pixel (x, y) with source pixel (x - dx, y - dy), over the columns and rows that both images have there and over the
// planes that both have:
//
//   metric = sum of (reference - source * r)^2 / (rows * columns * planes)         [raw units squared]
//
// with r the brightness ratio of the plane, rounded to float; the rest in double. The metric is a mean, so a small
// overlap is not penalised. Without a common column and row it is 3.402823466e+38, which never wins.
//
// Order of the sum, the same for Do and both CalcValue, so that they agree bit for bit on a shift. The reference is cut
// into strips of 16 rows; a strip has 128 partial sums, one for all columns x with the same x mod 128, each taken from
// tile to tile (128 columns) and inside a tile from top to bottom. The 128 sums are folded in halves, and the strips
// added from top to bottom, plane after plane. So the metric may differ from a plain running sum in the last bits of a
// double, on the side of the smaller error.
//
// Scratch memory: up to about 0.6 MiB, and 32 bytes for each column and row with fractional shifts.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgMatching : public COrbImage {
 public:
  CImgMatching() = default;
  CImgMatching(CImgMatching const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgMatching& operator=(CImgMatching const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // Searches around the estimate (*x, *y) [pixels]. Returns 1 and the best shift in *x, *y; 0, both untouched, if no
  // position had an overlap or a metric that is a number.
  //
  // `range` [pixels] is the full width of the search: every second whole shift from trunc(estimate - range / 2) to
  // trunc(estimate + range / 2) in both directions, range / 2 being an integer division (so -1 still tries one
  // position, and any lower range none), then the eight neighbours of the winner. `fine` non-zero goes on to tenths:
  // steps of 0.3 up to 0.6 around the best, then steps of 0.1 up to 0.2 around the best of those. The first of equal
  // positions wins.
  //
  // The ratio of a plane is GetAvrGrayRaw of the reference by that of the source.
  //
  // Progress: message 6152, range * range / 4 + 9 units, or + 297 with `fine`: 1 for each whole shift, 6 for each
  // fractional one. Whole shifts are computed up to 306 at a time, and tick when they are done. ESC does not stop the
  // search.
  //
  // Whole shifts that cannot win are not computed to the last bit: sums of floats, and limits for their rounding, show
  // it in half the time or less. The answer is that of the metric of all of them. Where nearly all shifts are equal, to
  // a few millionths for each 100 columns, the search takes half as long again.
  int Do(COrbImage* source, double* x, double* y, int range, int fine, int progress);

  // The metric at a whole shift. `ratio` has an entry for each plane that both images have.
  double CalcValue(COrbImage* source, int dx, int dy, double* const ratio);

  // The metric at a fractional shift: bilinear source values at (x - dx, y - dy), over the reference pixels for which
  // that position has neighbours on both sides. A position on the last column or row is interpolated from the cell
  // before it; at whole coordinates elsewhere the sample itself is taken.
  double CalcValue(COrbImage* source, double dx, double dy, double* const ratio);

 private:
  friend struct OrbTestAccess;
};
