// The values in a rectangle that is not empty and lies in its image, and their statistics, row by row.
//
// Sums are taken in interleaved partial sums (sum_kernels.h), so that their last bits may differ from those of one
// running sum.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

#include <orbimg/core/extrema_internal.h>
#include <orbimg/core/operator_run.h>
#include <orbimg/core/sum_kernels.h>

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

// A plane's raw samples.
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

template <typename Values>
void WidenByRow(Values const& values, typename Values::Type const* row, Extrema<typename Values::Type>& found) {
  WidenExtrema(row, static_cast<std::size_t>(values.Columns()), found);
}

// Starts from the first value, which therefore stays if it is not a number.
template <typename Values>
Extrema<typename Values::Type> ExtremaOf(Values& values) {
  auto const first = values.Row(0)[0];
  Extrema<typename Values::Type> found{first, first};
  for (int row = 0; row < values.Rows(); ++row) WidenByRow(values, values.Row(row), found);
  return found;
}

// Calls visit(row) for each row too, while it is at hand; so does DeviationOf.
template <typename Values, typename Visit>
double MeanOf(Values& values, Visit visit) {
  LaneSum sum;
  for (int row = 0; row < values.Rows(); ++row) {
    auto const* const v = values.Row(row);
    sum.AddRow(v, values.Columns());
    visit(v);
  }
  return sum.Total() / static_cast<double>(values.Count());
}

// The standard deviation, dividing by the number of values.
template <typename Values, typename Visit>
double DeviationOf(Values& values, double mean, Visit visit) {
  LaneSum squares;
  for (int row = 0; row < values.Rows(); ++row) {
    auto const* const v = values.Row(row);
    squares.AddSquaredDeviations(v, values.Columns(), mean);
    visit(v);
  }
  return std::sqrt(squares.Total() / static_cast<double>(values.Count()));
}

}  // namespace orb
