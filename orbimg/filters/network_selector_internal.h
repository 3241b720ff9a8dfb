// Selection for small masks: a network over the samples under the mask, a block of columns at a time.
#pragma once

#include <memory>

#include <orbimg/filters/tile_selector_internal.h>

namespace orb {

// Masks of up to this many samples; beyond, a window over ranks is faster.
inline constexpr int kMostNetworkInputs = 37;

// The value at `index` of the samples under the mask and of `zeros` samples of 0.0 beside them, for tiles that have all
// samples. `index` is at least `zeros`, and less than the samples under the mask.
std::unique_ptr<TileSelector> MakeNetworkSelector(Disk const& disk, int index, int zeros);

}  // namespace orb
