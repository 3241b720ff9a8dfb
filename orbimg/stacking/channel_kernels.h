// Rows that join samples of several planes: colours out of their complements, and complements out of colours.
#pragma once

#include <cstddef>

namespace orb {

// From cyan, magenta, yellow to red, green, blue: the two complements that hold a colour, less the one that does not.
void PrimariesRow(float const* const complements[3], std::ptrdiff_t count, float* const primaries[3]);

// (p + q) * factor. A factor of 1.0 changes no sum.
void PairRow(float const* p, float const* q, double factor, std::ptrdiff_t count, float* dst);

}  // namespace orb
