// Interpolation of a row that lies between two rows of an image: what a shifted image is read by.
#pragma once

#include <cstddef>

namespace orb {

// The two rows of samples that a row of a shifted image lies between. A side of one sample stands for its own
// neighbour.
struct RowPair {
  float const* a0;
  float const* a1;
  float const* b0;
  float const* b1;
};

// out = InterpolateCell of column i of the pair, with its own fraction along the row and g from the upper to the lower
// row.
void InterpolateRunRow(RowPair pair, double const* fractions, double g, std::ptrdiff_t count, float* out);
void InterpolateRunRow(RowPair pair, double const* fractions, double g, std::ptrdiff_t count, double* out);

// The same where all columns have one fraction, which spares reading it.
void InterpolateEvenRunRow(RowPair pair, double f, double g, std::ptrdiff_t count, float* out);
void InterpolateEvenRunRow(RowPair pair, double f, double g, std::ptrdiff_t count, double* out);

}  // namespace orb
