// Medians of the small disks' numbers of samples, each by a network that is laid out when this is compiled: its entries
// stay in registers.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orb {

// out[x] = the key at index n / 2 of rows[0][x] .. rows[n - 1][x], ascending.
using MedianOfRows = void (*)(std::int32_t const* const* rows, std::ptrdiff_t count, std::int32_t* out);

// Of n samples; null for an n that no small disk has.
MedianOfRows FindMedianOfRows(int n);

}  // namespace orb
