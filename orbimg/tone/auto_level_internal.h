// The values in a rectangle that auto level takes its statistics from: a plane's raw samples, or a colour's brightness.
// The rectangle is not empty.
#pragma once

#include <cstdint>
#include <vector>

#include <orbimg/core/operator_run.h>

namespace orb {

class RectangleValues {
 public:
  RectangleValues(COrbImage const& of, Bounds const& area) : image(&of), bounds(area) {}

  int Rows() const { return bounds.Rows(); }
  int Columns() const { return bounds.Columns(); }
  std::int64_t Count() const { return static_cast<std::int64_t>(Rows()) * Columns(); }

 protected:
  COrbImage const* image;
  Bounds bounds;
};

class PlaneValues : public RectangleValues {
 public:
  using Type = float;

  PlaneValues(COrbImage const& of, Bounds const& area, int ofPlane) : RectangleValues(of, area), plane(ofPlane) {}

  float const* Row(int row) const { return image->GetImageAdr(bounds.left, bounds.top + row, plane, 1, nullptr); }
  // `position` counts along the rows.
  float At(std::int64_t position) const { return Row(static_cast<int>(position / Columns()))[position % Columns()]; }

 private:
  int plane;
};

// On the 256-scale: 0.299 R + 0.587 G + 0.114 B, summed in this order.
class Brightness256Values : public RectangleValues {
 public:
  using Type = double;

  Brightness256Values(COrbImage const& of, Bounds const& area);

  // Lives until the next call.
  double const* Row(int row);

 protected:
  void Compute(int row, int column, std::ptrdiff_t count, double* values) const;

  std::vector<double> buffer;
};

// Brought back to raw units with the levels of plane 0.
class RawBrightnessValues : public Brightness256Values {
 public:
  RawBrightnessValues(COrbImage const& of, Bounds const& area);

  double const* Row(int row);
  double At(std::int64_t position) const;

 private:
  Level level;
};

}  // namespace orb
