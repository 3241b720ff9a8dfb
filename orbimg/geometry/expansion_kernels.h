// Rows of a map: where the points of a parallel lie on the disk of a photograph.
#pragma once

#include <cstddef>

#include <orbimg/core/cell_row_kernels.h>

namespace orb {

// How a globe lies in a photograph.
struct GlobeView {
  double m[3][3];  // turns a direction of the globe into one of the view
  double cx;
  double cy;
  double radius;
};

// One row of the map: the factors that its points share.
struct Parallel {
  double cosine;  // of the latitude
  double z;       // flattened
};

// For each column, by the cosine and sine of its longitude: 1 where the photograph shows the point, and then its cell
// and the fractions inside; else 0, and no more than that the cell is one of the plane's.
void LocateParallelRow(GlobeView const& view, Parallel parallel, double const* cosines, double const* sines,
                       PlaneShape shape, std::ptrdiff_t count, double* fractionX, double* fractionY,
                       std::ptrdiff_t* offsets, int* isShown);

}  // namespace orb
