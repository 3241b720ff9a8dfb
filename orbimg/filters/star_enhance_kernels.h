// Row work of the star enhance filter.
#pragma once

#include <cstddef>

namespace orb {

void MakeAbsoluteRow(float* samples, std::ptrdiff_t count);

// out = |laplacian|, or 0 where that is below the threshold
void KeepStrongEdgesRow(double const* laplacian, std::ptrdiff_t count, double threshold, float* out);

// dst = src + edges * strength, the product rounded to float first
void AddEdgesRow(float const* src, double const* edges, std::ptrdiff_t count, double strength, float* dst);

}  // namespace orb
