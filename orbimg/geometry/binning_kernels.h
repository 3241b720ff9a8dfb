// Sums of neighbouring samples of a row.
#pragma once

#include <cstddef>

namespace orb {

// sums[i] += src[i * bin] + ... + src[i * bin + bin - 1], term by term, each sum a float after each term.
void AddBinsRow(float const* src, int bin, float* sums, std::ptrdiff_t count);

// sums[i] = upper[2 * i] + upper[2 * i + 1] + lower[2 * i] + lower[2 * i + 1], from 0.0 on, term by term: the commonest
// block in one go.
void SumPairsRow(float const* upper, float const* lower, float* sums, std::ptrdiff_t count);

}  // namespace orb
