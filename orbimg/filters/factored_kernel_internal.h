// A table of weights as the product of two rows of factors, so that its sum over a square is a sum over columns and one
// over rows.
#pragma once

#include <vector>

#include <orbimg/filters/filter_kernel.h>

namespace orb {

// The weights of a table are floats, so no product equals them all. The factors are those whose largest relative
// deviation from any weight is smallest.
class FactoredKernel {
 public:
  explicit FactoredKernel(CFilterKernel const& kernel);

  // Whether no weight deviates by more than kMostDeviation. The sum of products is then as near to the sum of weights
  // times samples as this share of the sum of weights times |samples|.
  bool IsFaithful() const { return isFaithful; }

  // Of the rows, from the top one on; 29 significant bits.
  std::vector<double> const& RowFactors() const { return rowFactors; }
  // Of the columns, from the centre outwards: both sides have the same.
  std::vector<double> const& ColumnFactors() const { return columnFactors; }

  static constexpr double kMostDeviation = 1.75 / 16777216.0;  // 2^24: a float has 24 bits

 private:
  std::vector<double> rowFactors;
  std::vector<double> columnFactors;
  bool isFaithful = false;
};

}  // namespace orb
