#include <orbimg/filters/key_tile_internal.h>

#include <algorithm>

#include <orbimg/core/exchange_kernels.h>

namespace orb {

TileLoader::TileLoader(Disk const& disk, int planeWidth, OuterColumns outerColumns, int columns)
    : width(planeWidth), outer(outerColumns), below(disk.Below()), tile{} {
  tile.above = disk.Above();
  tile.reach = disk.Reach();
  tile.stride = static_cast<std::ptrdiff_t>(columns) + 2 * static_cast<std::ptrdiff_t>(tile.reach);
}

void TileLoader::Load(Bounds const& area, float const* const* rows) {
  tile.area = area;
  std::size_t const count = static_cast<std::size_t>(tile.above) + static_cast<std::size_t>(area.Rows() + below);
  tile.keys.resize(std::max(tile.keys.size(), count * static_cast<std::size_t>(tile.stride)));
  tile.hasRow.assign(count, true);
  bool const isClamped = outer == OuterColumns::kClamped;
  tile.firstColumn = isClamped ? 0 : std::max(tile.reach - area.left, 0);
  tile.endColumn = isClamped ? tile.Columns() : std::min(tile.Columns(), width - area.left + tile.reach);
  for (std::size_t i = 0; i < count; ++i) {
    tile.hasRow[i] = rows[i] != nullptr;
    if (rows[i] != nullptr) LoadRow(rows[i], &tile.keys[i * static_cast<std::size_t>(tile.stride)]);
  }
}

void TileLoader::LoadRow(float const* row, std::int32_t* keys) const {
  int const first = tile.area.left - tile.reach;  // column of the image at the tile's first
  int const begin = std::max(-first, 0);
  int const end = std::min(tile.Columns(), width - first);
  LoadKeysRow(row + (first + begin), end - begin, keys + begin);
  if (outer == OuterColumns::kAbsent) return;
  std::fill(keys, keys + begin, KeyOf(row[0]));
  std::fill(keys + end, keys + tile.Columns(), KeyOf(row[width - 1]));
}

}  // namespace orb
