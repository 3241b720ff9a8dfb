// HalfPlane: the spectrum of a real plane whose sides are powers of two, without the half that mirrors the other.
//
// The transform is the unitary one of CFourierPlane, at half its work and memory: the spectra of real rows two by two,
// and of the columns those up to the middle. Column c of it, for c = 1 .. width/2 - 1, is column c of the whole
// spectrum. Column 0 and column width/2 have real numbers in it before columns are transformed: one is the real, the
// other the imaginary part of the first column here.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include <orbimg/restoration/fourier_kernels.h>
#include <orbimg/restoration/plane_memory_internal.h>

namespace orb {

// Real factors of a spectrum that mirror as it does.
struct SpectrumFactors {
  // For spectra of real planes of these sides. Lack of memory is std::bad_alloc.
  void Create(std::ptrdiff_t width, std::ptrdiff_t height);

  std::ptrdiff_t stride = 0;
  std::vector<float> inner;   // rows of width/2, of which the first counts for nothing
  std::vector<float> zero;    // of column 0
  std::vector<float> middle;  // of column width/2

  float* Row(std::ptrdiff_t v) { return inner.data() + v * stride; }
  // B/(B B + noise times the largest B B) for each B.
  void ToWiener(double noise);
};

class HalfPlane {
 public:
  // Two blocks of rows and a block of columns.
  static constexpr int kLeastSide = 2 * static_cast<int>(kFourierLanes);
  static bool Takes(int width, int height) { return width >= kLeastSide && height >= kLeastSide; }

  // Sides are powers of two that it takes. Memory: width * height floats, and 200 for each point of the longer side.
  // Lack of it is std::bad_alloc.
  HalfPlane(std::ptrdiff_t width, std::ptrdiff_t height);

  // From real rows: fill(y, row) writes `width` samples, or returns false where all are 0.
  template <typename Fill>
  void TransformRows(Fill fill);
  // To the first `rows` real rows: take(y, row).
  template <typename Take>
  void TransformRowsBack(std::ptrdiff_t rows, Take take);

  // Transforms the columns, multiplies, and transforms them back.
  void FilterColumns(SpectrumFactors& factors);
  // Transforms the columns; the real parts of the spectrum become `factors`. Leaves the plane as it was.
  void TakeRealParts(SpectrumFactors& factors);

 private:
  static constexpr std::ptrdiff_t kRows = 2 * kFourierLanes;

  FourierLines RowLines(bool isInverse);
  FourierLines ColumnLines(bool isInverse);
  float* Row(std::ptrdiff_t y) { return data.Data() + y * stride; }
  void SplitRows(std::ptrdiff_t y);
  void JoinRows(std::ptrdiff_t y);
  void FilterFirstColumn(SpectrumFactors& factors, float* values) const;

  std::ptrdiff_t const width;
  std::ptrdiff_t const height;
  std::ptrdiff_t const stride;  // of rows of `data`: a little off a power of two, or columns would share cache lines
  AlignedFloats data;
  std::vector<float> rowTwiddles;
  std::vector<float> columnTwiddles;
  AlignedFloats block;
  AlignedFloats other;
  AlignedFloats samples;  // kRows rows
};

template <typename Fill>
void HalfPlane::TransformRows(Fill fill) {
  for (std::ptrdiff_t y = 0; y < height; y += kRows) {
    bool isEmpty = true;
    for (std::ptrdiff_t i = 0; i < kRows; ++i) {
      float* const row = samples.Data() + i * width;
      if (fill(y + i, row)) {
        isEmpty = false;
      } else {
        std::fill_n(row, width, 0.0f);
      }
    }
    if (isEmpty) {
      std::fill_n(Row(y), kRows * stride, 0.0f);
    } else {
      SplitRows(y);
    }
  }
}

template <typename Take>
void HalfPlane::TransformRowsBack(std::ptrdiff_t rows, Take take) {
  for (std::ptrdiff_t y = 0; y < rows; y += kRows) {
    JoinRows(y);
    for (std::ptrdiff_t i = 0; i < std::min(kRows, rows - y); ++i) take(y + i, samples.Data() + i * width);
  }
}

}  // namespace orb
