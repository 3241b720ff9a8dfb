// The cubic sum over positions of a grid: the plain sum for one sample, and whole rows.
#pragma once

#include <cstddef>
#include <vector>

#include <orbimg/core/bilinear_internal.h>
#include <orbimg/core/orb_image.h>
#include <orbimg/geometry/resolution_kernels.h>

namespace orb {

// h(t) for the distance from the position that is asked for.
double CubicWeight(double t);

// What one column or row of the grid takes of one direction of the source.
struct CubicTaps {
  struct Tap {
    double position;  // mirrored into the source
    CellPosition place;
    double weight;
  };

  CubicTaps(double position, int size);

  // All weight lies on the second tap, and exactly, as it does nearly everywhere.
  bool IsSingle() const { return isSingle; }
  // The samples within reach, first and last.
  int First() const;
  int Last(int size) const;

  Tap taps[4];
  int count = 0;  // Intended: 3 where rounding carries the last step past its end

 private:
  bool isSingle;
};

// One for each of `newSize` columns or rows.
std::vector<CubicTaps> MakeCubicTaps(int oldSize, int newSize, int sourceSize);

// The sum as the header of CImgResolution has it.
float CubicSum(COrbImage const& source, int plane, CubicTaps const& column, CubicTaps const& row);

// One plane, row after row of the grid. Where all the weights are 1 or 0 and all samples within reach are finite, the
// sum is the bilinear value at the one position that counts; the other columns take the plain sum.
class CubicRows {
 public:
  CubicRows(COrbImage const& initSource, std::vector<CubicTaps> const& initTaps, GridColumns const& columns,
            int initPlane);

  void Sample(CubicTaps const& row, float* out);

 private:
  enum class RowState : unsigned char { kUnknown, kFinite, kNotFinite };

  bool IsFinite(int y);
  bool ReachesOnlyFinite(CubicTaps const& row);
  void CountNotFinite(CubicTaps const& row);
  bool ReachesOnlyFiniteColumns(CubicTaps const& column) const;

  COrbImage const& source;
  std::vector<CubicTaps> const& taps;
  int plane;
  GridRows grid;
  std::vector<std::size_t> notSingle;  // columns of the grid that always take the plain sum
  std::vector<RowState> states;        // of the rows of the source
  std::vector<int> notFinite;  // of the columns before each of the source, those with such a sample within reach
};

// The columns of a grid for the tap that counts.
GridColumns MainColumns(std::vector<CubicTaps> const& taps, int sourceWidth);

}  // namespace orb
