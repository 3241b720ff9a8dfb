// The brightness of a colour in a rectangle that is not empty, as auto level takes its statistics from it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <orbimg/core/rectangle_statistics_internal.h>

namespace orb {

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
