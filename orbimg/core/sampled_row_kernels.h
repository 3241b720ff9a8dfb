// Whole rows of another image read through a transform: the fast twin of the transformed sampler. Every value equals, bit
// for bit, what the single-sample form of COrbImage returns for that pixel.
#pragma once

#include <cstddef>
#include <vector>

#include <orbimg/core/orb_image.h>
#include <orbimg/core/transform_internal.h>

namespace orb {

// Made once for a run over the columns left .. right - 1 of the destination; holds the scratch memory of a row.
class SampledRow {
 public:
  // The angle's sine and cosine as the operator computed them; scale 1.0. `source` is locked by the caller while rows are
  // read, so that its address holds.
  SampledRow(COrbImage& source, int left, int right, double dx, double dy, double sinA, double cosA);

  // Finds the source positions of row y. Call first for each row.
  void Locate(int y);

  // Columns of the row for which the position falls inside the source (real-number test), as offsets from `left`. The
  // inside columns of a row are always one interval; empty: begin == end.
  std::ptrdiff_t InsideBegin() const;
  std::ptrdiff_t InsideEnd() const;

  // Source positions of the row, one for each column.
  double const* PositionX() const;
  double const* PositionY() const;

  // The bilinear values of one plane in double, unrounded, `outside` where outside. On a mono source plane is taken as 0.
  void SampleDouble(int plane, double outside, double* out);
  // The same rounded to float: GetPixelGrayRaw(x, y, dx, dy, sinA, cosA, 1.0, plane, outside, 0, ...).
  void SampleRaw(int plane, double outside, float* out);

 private:
  // The builder of this class fills in what it needs.
};

}  // namespace orb
