// CFilterRows::Convolve and ConvolveClip for a row of columns at once.
#pragma once

#include <optional>
#include <vector>

#include <orbimg/filters/convolution_kernels.h>
#include <orbimg/filters/factored_kernel_internal.h>
#include <orbimg/filters/filter_kernel.h>
#include <orbimg/filters/side_sums_internal.h>
#include <orbimg/filters/wide_kernels.h>
#include <platform/export.h>

namespace orb {

// Of one kernel on windows of one radius over images of one width. Scratch memory: two taps a weight, the samples at a
// side of the image, and a block of sums; for clipped rows and for radii that differ, a few rows as well.
//
//   RowConvolution convolution(kernel, r, src->GetWidth());
//   window.Set(src, r, 0, y, plane, 2);
//   convolution.Compute(window.rows.get(), left, right, out);    // out[0] belongs to column `left`
class ORBIMG_API RowConvolution {
 public:
  enum class Sums {
    kAsListed,  // equal to CFilterRows bit for bit
    kFactored,  // where FactoredKernel is faithful to the weights, in two steps, as near to it as stated there
  };

  // `kernel` is not needed any longer afterwards.
  RowConvolution(CFilterKernel const& kernel, int windowRadius, int width, Sums sums = Sums::kAsListed);

  // Results for the columns begin .. end - 1 of the image, none if there are none. `rows` are a window's, at column 0.
  void Compute(float* const* rows, int begin, int end, double* out);
  void Compute(float* const* rows, int begin, int end, float* out);
  // The same for a band of neighbouring rows; faster, not different. Only where TakesBands. First StartBand with the
  // rows of all their windows, then its rows one by one, or four together where TakesFourRows. `rows` are then those of
  // the window of the first one, and of three more windows, and `row` is its place in the band.
  bool TakesBands() const { return sides.has_value(); }
  bool TakesFourRows() const { return TakesBands() && HasWideVectors(); }
  void StartBand(float* const* rows, int rowCount, int begin, int end);
  void ComputeInBand(float* const* rows, int row, int begin, int end, float* out);
  void ComputeFourInBand(float* const* rows, int row, int begin, int end, float* const* out);
  // ConvolveClip.
  void ComputeClipped(float* const* rows, int begin, int end, float lo, float hi, float* out);

 private:
  struct Place {
    double weight;
    int row;
    int dx;
  };

  // Columns begin .. end - 1 where the kernel lies inside the row, none at `end` if there are none.
  struct Inside {
    int begin;
    int end;
  };

  Inside InsideOf(int begin, int end) const;
  template <typename Out>
  void ComputeAll(float* const* rows, int begin, int end, Out* out);
  template <typename Out>
  void ComputeInside(float* const* rows, int begin, int end, Out* out);
  void ComputeFactored(float* const* rows, int begin, int end, float* out);
  void ComputeFourInside(float* const* rows, int begin, int end, float* const* out);
  void ComputeFourFactored(float* const* rows, int begin, int end, float* const* out);
  template <typename WeightAt>
  void ListFourRows(WeightAt weightAt, int columns, bool doSkip, float* const* rows, int x);
  template <typename Out>
  void ComputeNarrow(float* const* rows, int begin, int end, Out* out);
  void SumPadded(float* const* rows, int begin, int end, float lo, float hi, bool doClip, float* out);
  bool DoSkipZeros(float* const* rows, int rowCount, int begin, int end) const;

  int windowRadius;
  int width;
  int m;                      // radius of the part of the kernel that is used
  bool isWide;                // the kernel fits the window
  std::vector<Place> places;  // all weights of that part, in table order
  std::size_t zeroWeights;
  std::optional<FactoredKernel> factored;
  std::optional<SideSums> sides;
  std::vector<Tap> taps;
  std::vector<FourRowTap> fourTaps;
  std::vector<FourRowTaps> fourLists;
  std::vector<float> padded;
  std::vector<float> narrow;
  std::vector<double> sums;
};

}  // namespace orb
