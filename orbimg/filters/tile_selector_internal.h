// What finds the order statistics of a tile: one of several ways, chosen by the size of the mask.
#pragma once

#include <cstddef>

#include <orbimg/filters/key_tile_internal.h>

namespace orb {

// How large the tiles are that a selector works best on.
struct TileShape {
  int columns;
  int rows;
};

class TileSelector {
 public:
  virtual ~TileSelector() = default;

  virtual TileShape Shape() const = 0;
  // Row i of the tile's area goes to out + i * stride.
  virtual void Select(KeyTile const& tile, float* out, std::ptrdiff_t stride) = 0;
};

}  // namespace orb
