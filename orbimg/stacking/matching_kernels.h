// Row work of the image matching: wide copies of a tile, interpolated rows, and sums of squared differences.
#pragma once

#include <cstddef>

namespace orb {

// Columns of a tile, and partial sums of a strip of tiles.
inline constexpr int kTileColumns = 128;
inline constexpr int kTileRows = 16;

// out = in * r for a block of samples; the strides are those from row to row
void WidenBlock(float const* in, std::ptrdiff_t inStride, std::ptrdiff_t columns, int rows, double r, double* out,
                std::ptrdiff_t outStride);

// out = b * f + a * (1 - f), with b the right-hand neighbours of a
void InterpolateColumnsRow(float const* a, float const* b, double const* f, std::ptrdiff_t count, double* out);

// out = (upper * (1 - g) + lower * g) * r
void InterpolateRowsRow(double const* upper, double const* lower, double g, double r, std::ptrdiff_t count,
                        double* out);

// A block of wide samples, `stride` apart from row to row.
struct WideBlock {
  double const* samples;
  std::ptrdiff_t stride;
};

// One block b to compare with a, and where its differences go.
struct DifferenceJob {
  double const* samples;
  double* sums;
};

// For each job, sums[x] += (a - b)^2 for each row from the top. `stride` is that of every b.
void AddSquaredDifferences(WideBlock a, std::ptrdiff_t columns, int rows, std::ptrdiff_t stride,
                           DifferenceJob const* jobs, std::size_t count);

// The sum of kTileColumns numbers, the second half added to the first until one is left. Overwrites them.
double FoldSums(double* sums);

}  // namespace orb
