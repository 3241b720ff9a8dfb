// Row work of the median: samples as integers that sort like them, and exchanges of whole rows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include <orbimg/stacking/selection_network_internal.h>

namespace orb {

// A block of keys has rows of this many columns: short enough for a stack of many frames to stay in the first cache.
inline constexpr int kMedianColumns = 64;
using KeyRow = std::int32_t[kMedianColumns];

// Keys are the bits of a float, turned so that integers compare as the floats do: -0.0 before 0.0, not-a-number at the
// ends.
inline constexpr std::int32_t kLowestKey = INT32_MIN;
inline constexpr std::int32_t kHighestKey = INT32_MAX;

void LoadKeysRow(float const* samples, std::ptrdiff_t count, std::int32_t* key);

// The same for a row from each of `samples`, from column `begin` on.
void LoadKeyRows(std::span<float const* const> samples, std::ptrdiff_t begin, std::ptrdiff_t count, KeyRow* rows);

// Keys of a row of gaps: the lowest key where lows[x] is above 0, which becomes one less, the highest key otherwise.
void FillGapsRow(std::ptrdiff_t count, std::int32_t* lows, std::int32_t* key);

// counts[x] += 1
void CountRow(std::ptrdiff_t count, std::int32_t* counts);

// Meanwhile asks the memory for as many samples from each address in `soon`; they need not be readable.
void ExchangeRows(std::span<Exchange const> exchanges, KeyRow* rows, std::span<std::uintptr_t const> soon);

// The samples of a row of keys.
void StoreKeysRow(std::int32_t const* key, std::ptrdiff_t count, float* out);

}  // namespace orb
