// Selection for disks of any size: ranks of a tile, and a window that slides over them to and fro, row by row.
#pragma once

#include <cstdint>
#include <memory>

#include <orbimg/filters/rank_tile_internal.h>
#include <orbimg/filters/rank_window_kernels.h>
#include <orbimg/filters/tile_selector_internal.h>

namespace orb {

// Which order statistic a row's samples want.
class WishMaker {
 public:
  virtual ~WishMaker() = default;
  // For the columns left .. right - 1 of row y. `wishes` has room for them.
  virtual void Make(int y, int left, int right, RowWishes& wishes) = 0;
};

std::unique_ptr<TileSelector> MakeWindowSelector(Disk const& disk, std::unique_ptr<WishMaker> wishes);

}  // namespace orb
