// Rows and blocks of samples, moved in bulk.
#pragma once

#include <cstddef>

namespace orb {

// dst[i] = src[count - 1 - i]
void ReverseRow(float const* src, float* dst, std::ptrdiff_t count);

// Rows that lie a fixed number of samples apart, which may be negative: row j begins at first + j * step.
struct ConstRows {
  float const* first;
  std::ptrdiff_t step;
};
struct Rows {
  float* first;
  std::ptrdiff_t step;
};

// Sample i of row j of `dst` becomes sample j of row i of `src`, for `dstRows` rows of `dstColumns` samples.
void TransposeRows(ConstRows src, Rows dst, std::ptrdiff_t dstColumns, std::ptrdiff_t dstRows);

}  // namespace orb
