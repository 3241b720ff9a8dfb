// Row work of the image matching: copies of a tile, interpolated rows, and sums of squared differences. Samples are
// doubles for the metric, floats for the bounds on it.
#pragma once

#include <cstddef>

namespace orb {

// Columns of a tile, and partial sums of a strip of tiles.
inline constexpr int kTileColumns = 128;
inline constexpr int kTileRows = 16;

// out = in * r for a block of samples, with r the value of a float; the strides are those from row to row
void ScaleBlock(float const* in, std::ptrdiff_t inStride, std::ptrdiff_t columns, int rows, double r, double* out,
                std::ptrdiff_t outStride);
void ScaleBlock(float const* in, std::ptrdiff_t inStride, std::ptrdiff_t columns, int rows, double r, float* out,
                std::ptrdiff_t outStride);

// out = b * f + a * (1 - f), with b the right-hand neighbours of a
void InterpolateColumnsRow(float const* a, float const* b, double const* f, std::ptrdiff_t count, double* out);

// out = (upper * (1 - g) + lower * g) * r
void InterpolateRowsRow(double const* upper, double const* lower, double g, double r, std::ptrdiff_t count,
                        double* out);

// A block of samples, `stride` apart from row to row.
template <typename Sample>
struct Block {
  Sample const* samples;
  std::ptrdiff_t stride;
};

// One block b to compare with a, and where its differences go.
template <typename Sample>
struct DifferenceJob {
  Sample const* samples;
  Sample* sums;
};

// For each job, sums[x] += (a - b)^2 for each row from the top. `stride` is that of every b.
void AddSquaredDifferences(Block<double> a, std::ptrdiff_t columns, int rows, std::ptrdiff_t stride,
                           DifferenceJob<double> const* jobs, std::size_t count);
void AddSquaredDifferences(Block<float> a, std::ptrdiff_t columns, int rows, std::ptrdiff_t stride,
                           DifferenceJob<float> const* jobs, std::size_t count);

// The sum of kTileColumns numbers, the second half added to the first until one is left. May overwrite them.
double FoldSums(double* sums);
double FoldSums(float* sums);

// sums[x mod kTileColumns] += in[x]^2
void AddSquaresRow(float const* in, std::ptrdiff_t count, double* sums);

}  // namespace orb
