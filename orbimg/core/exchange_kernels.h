// Blocks of keys, and the exchanges of a selection network over whole rows of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include <orbimg/core/sample_key_internal.h>
#include <orbimg/core/selection_network_internal.h>

namespace orb {

// A block of keys has rows of this many columns: short enough for a stack of many frames, or for the samples under a
// small window, to stay in the first cache.
inline constexpr int kKeyColumns = 64;
using KeyRow = std::int32_t[kKeyColumns];

void LoadKeysRow(float const* samples, std::ptrdiff_t count, std::int32_t* key);

// Meanwhile asks the memory for as many samples from each address in `soon`; they need not be readable.
void ExchangeRows(std::span<Exchange const> exchanges, KeyRow* rows, std::span<std::uintptr_t const> soon);

// The samples of a row of keys.
void StoreKeysRow(std::int32_t const* key, std::ptrdiff_t count, float* out);

}  // namespace orb
