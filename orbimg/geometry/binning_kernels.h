// Sums of neighbouring samples of a row.
#pragma once

#include <cstddef>

namespace orb {

// sums[i] += src[i * bin] + ... + src[i * bin + bin - 1], term by term, each sum a float after each term.
void AddBinsRow(float const* src, int bin, float* sums, std::ptrdiff_t count);

}  // namespace orb
