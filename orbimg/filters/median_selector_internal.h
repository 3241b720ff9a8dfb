// Selection of the median of the smallest disks.
#pragma once

#include <memory>

#include <orbimg/filters/tile_selector_internal.h>

namespace orb {

// Null for a disk that is not among them.
std::unique_ptr<TileSelector> MakeMedianSelector(Disk const& disk);

}  // namespace orb
