// Row work of the small neighbourhoods. rows[0 .. 2 radius] point at the row's first column; all columns that a shape
// reads exist on both sides of the row. `out` overlaps no samples.
#pragma once

#include <cstddef>

namespace orb {

// The sample at `rank` of a shape's in ascending order, by the order of sample_order_internal.h. rank lies inside.
void RankShapeRow(int shape, int rank, float const* const* rows, std::ptrdiff_t count, float* out);

// |v| + floor, v by the Laplacian of the shape
void LaplacianRow(int shape, double floor, float const* const* rows, std::ptrdiff_t count, float* out);

}  // namespace orb
