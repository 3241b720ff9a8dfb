// Rows of the mosaic: which of two sources shows where both cover a pixel, and the way into the canvas.
#pragma once

#include <cstddef>

#include <orbimg/core/level.h>

namespace orb {

// What decides where both sources cover a pixel; key and tolerance on the scale of the samples.
struct Overlap {
  int mode;  // other than 0 to 3: the first source alone
  double key[3];
  double tolerance;
};

// The samples of `second` that show replace those of `first`.
void MergeRow(Overlap const& overlap, float const* second, std::ptrdiff_t count, float* first);
// A colour pixel is taken over as a whole.
void MergeColorRow(Overlap const& overlap, double const* const second[3], std::ptrdiff_t count, double* const first[3]);

// Into the canvas: from the 256-scale by the level `to`, or as they are where that is null.
void StoreRow(float const* values, std::ptrdiff_t count, Level const* to, float* dst);
void StoreRow(double const* values, std::ptrdiff_t count, Level const* to, float* dst);

// The same with the mean of both sources.
void StoreMeanRow(float const* first, float const* second, std::ptrdiff_t count, Level const* to, float* dst);
void StoreMeanRow(double const* first, double const* second, std::ptrdiff_t count, Level const* to, float* dst);

}  // namespace orb
