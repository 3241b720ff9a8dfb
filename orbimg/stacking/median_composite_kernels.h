// Row work of the median beside the exchanges: loading frames, and what stands where a frame has no sample.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include <orbimg/core/exchange_kernels.h>

namespace orb {

// LoadKeysRow for a row from each of `samples`, from column `begin` on.
void LoadKeyRows(std::span<float const* const> samples, std::ptrdiff_t begin, std::ptrdiff_t count, KeyRow* rows);

// Keys of a row of gaps: the lowest key where lows[x] is above 0, which becomes one less, the highest key otherwise.
void FillGapsRow(std::ptrdiff_t count, std::int32_t* lows, std::int32_t* key);

// counts[x] += 1
void CountRow(std::ptrdiff_t count, std::int32_t* counts);

}  // namespace orb
