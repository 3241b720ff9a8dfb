// Selection of the least or the largest: minima along the chords of the disk, each chord from two overlapping runs of a
// power of two, and the chords of all rows joined.
#pragma once

#include <memory>

#include <orbimg/filters/tile_selector_internal.h>

namespace orb {

enum class Extreme { kLeast, kLargest };

std::unique_ptr<TileSelector> MakeExtremeSelector(Disk const& disk, Extreme extreme);

}  // namespace orb
