// Whole rows of another image read through a transform: the fast twin of the transformed sampler. Every value equals,
// bit for bit, what the single-sample form of COrbImage returns for that pixel with bilinear reading.
//
//   orb::SampledRow second(image, left, right, dx, dy, sinA, cosA);
//   for each y: second.Locate(y); second.SampleRaw(plane, outside, row);
//
// The addresses of the image are asked for anew by every sampling call, and none is kept: no lock is needed.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include <orbimg/core/bilinear_internal.h>
#include <orbimg/core/brightness_internal.h>
#include <orbimg/core/orb_image.h>
#include <orbimg/core/transform_internal.h>
#include <platform/export.h>

namespace orb {

// Neighbouring columns of a shifted row that read neighbouring cells.
struct ColumnRun {
  std::ptrdiff_t begin;
  std::ptrdiff_t end;
  int cell;         // of the first column
  double fraction;  // of the first column
  bool whole;       // all columns lie on samples
  bool even;        // all columns have the same fraction

  bool GoesOn(std::ptrdiff_t column, CellPosition const& position) const;
};

// Made once for a run over the columns left .. right - 1 of the destination; holds its scratch memory, up to eight
// doubles a column. Columns are counted from `left`. A mono image has plane 0 only, whatever `plane` says; a `plane` of
// -1 is the brightness of a colour image, which one of two planes does not have: plane 0 stands for it.
class ORBIMG_API SampledRow {
 public:
  // The angle's sine and cosine as the operator computed them.
  SampledRow(COrbImage& source, int left, int right, double dx, double dy, double sinA, double cosA,
             double scale = 1.0);

  // Finds the source positions of row y. Call first for each row.
  void Locate(int y);

  // The columns whose position falls inside the source (real-number test) are always one interval; empty: begin == end.
  std::ptrdiff_t InsideBegin() const { return begin; }
  std::ptrdiff_t InsideEnd() const { return end; }

  // Source position of a column, inside or not.
  double PositionX(std::ptrdiff_t column) const {
    return isShift ? alongX[At(column)] : (alongX[At(column)] - rowX) * transform.scale + transform.cx;
  }
  double PositionY(std::ptrdiff_t column) const {
    return isShift ? rowY : transform.cy - (alongY[At(column)] + rowY) * transform.scale;
  }

  // The bilinear values in double, unrounded, `outside` where outside.
  void SampleDouble(int plane, double outside, double* out);
  void SampleDouble256f(int plane, double outside, double* out);
  // The same rounded to float: GetPixelGrayRaw and GetPixelGray256f.
  void SampleRaw(int plane, double outside, float* out);
  void Sample256f(int plane, double outside, float* out);

 private:
  static std::size_t At(std::ptrdiff_t column) { return static_cast<std::size_t>(column); }

  void PrepareShift(int left);
  void PrepareRotation(int left);
  void LocateRotated(int y);
  bool IsBrightness(int plane) const { return plane == -1 && HasBrightness(source); }
  int StoredPlane(int plane) const { return source.IsColor() != 0 ? std::max(plane, 0) : 0; }
  template <typename Sample>
  void SampleInside(int plane, Sample* out) const;
  template <typename Sample>
  void SampleShifted(float const* samples, Sample* out) const;
  void SampleInside256f(int plane, double* out) const;
  template <typename SamplePlane>
  void BrightnessInside(SamplePlane samplePlane, double* out);
  template <typename Sample>
  void FillOutside(double outside, Sample* out) const;

  COrbImage& source;
  Transform transform;
  bool isShift;
  std::ptrdiff_t count;
  std::ptrdiff_t begin = 0;
  std::ptrdiff_t end = 0;

  // A shift: the source x of each column, and y of the row. Otherwise: the products of p with cosine and sine of each
  // column, and of q with sine and cosine of the row; p and q as in transform_internal.h. Without a rotation these are
  // p, 0, 0 and q, and give the same positions as the form that has no angle.
  std::vector<double> alongX;
  std::vector<double> alongY;
  double rowX = 0.0;
  double rowY = 0.0;

  // Fractions of the inside columns; of a shift, those of the columns hold for all rows.
  std::vector<double> fractionX;
  std::vector<double> fractionY;

  std::ptrdiff_t shiftBegin = 0;
  std::ptrdiff_t shiftEnd = 0;
  std::vector<ColumnRun> runs;
  CellPosition row{};

  std::vector<std::ptrdiff_t> offsets;  // of a rotated row: from the plane's first sample to the cell
  std::ptrdiff_t ahead = 0;             // of a rotation: from a cell to that of the same column some rows later
  std::vector<double> scratch[3];
};

}  // namespace orb
