// Convolution sums of the columns at both sides of an image, where the kernel reaches beyond the rows.
#pragma once

#include <vector>

#include <orbimg/filters/convolution_kernels.h>
#include <orbimg/filters/filter_kernel.h>

namespace orb {

// Of a kernel over images of one width. A side has only as many columns as the kernel's radius, so that a band of rows
// is summed at once, row beside row, with one column behind the other. Each sum is kept as a float after each term.
class SideSums {
 public:
  // `kernel` is not needed any longer afterwards.
  SideSums(CFilterKernel const& kernel, int width);

  // For `rowCount` neighbouring rows, the columns begin .. inside - 1 and outside .. end - 1. `rows` are those of all
  // their windows, at column 0.
  void Sum(float* const* rows, int rowCount, int begin, int inside, int outside, int end);

  // The sums of one of these rows; out[0] belongs to column `begin`.
  void CopyRow(int row, float* out) const;

 private:
  struct Side {
    int begin = 0;
    int columns = 0;
    std::vector<float> sums;  // column after column
  };

  void SumSide(float* const* rows, int begin, int end, Side& side);

  int radius;
  int width;
  std::vector<double> weights;  // in table order
  Side left;
  Side right;
  std::size_t stride = 0;  // rows of the windows
  std::vector<Tap> taps;
  std::vector<float> line;
  std::vector<float> samples;  // column after column
};

}  // namespace orb
