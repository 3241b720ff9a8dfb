// A piece of a plane as keys, with what lies around it as far as a mask reaches: what a selector works on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/filters/disk_internal.h>

namespace orb {

// Row y of the plane, from column 0 on. The rows before the first and behind the last are asked for too, and the answer
// is the caller's edge rule: another row, or null for none. Addresses must stay valid while others are asked for.
using SourceRow = std::function<float const*(int y)>;

// What stands for columns outside the plane.
enum class OuterColumns {
  kClamped,  // the first and the last column
  kAbsent,   // nothing
};

struct KeyTile {
  Bounds area;            // of the results, in the image
  int above;              // rows of the tile before the area's first
  int reach;              // columns of the tile on each side of the area
  std::ptrdiff_t stride;  // keys from one row to the next
  std::vector<std::int32_t> keys;
  std::vector<bool> hasRow;  // by row of the tile; what is absent has keys of no meaning
  int firstColumn;           // columns firstColumn .. endColumn - 1 of the tile are there
  int endColumn;

  int Rows() const { return static_cast<int>(hasRow.size()); }
  int Columns() const { return area.Columns() + 2 * reach; }
  std::int32_t const* Row(int row) const { return &keys[static_cast<std::size_t>(row * stride)]; }
  // Where the key of the first column of a row of the area stands, rows counted from the area's first.
  std::ptrdiff_t Centre(int row) const { return (row + above) * stride + reach; }
};

// Fills tiles from a plane of `width` columns.
class TileLoader {
 public:
  // A tile holds areas of up to `columns` columns.
  TileLoader(Disk const& disk, int width, OuterColumns outer, int columns);

  // `rows` are the source's for the tile, its first row first, null for absent ones.
  void Load(Bounds const& area, float const* const* rows);
  KeyTile const& Tile() const { return tile; }

 private:
  void LoadRow(float const* row, std::int32_t* keys) const;

  int width;
  OuterColumns outer;
  int below;
  KeyTile tile;
};

}  // namespace orb
