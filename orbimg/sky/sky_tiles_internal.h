// Square tiles over a rectangle of an image, and what is measured in them. Shared by the selection of sky and the sky
// flat. A Tile has left, top, width and height in pixels, median and stddev.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/core/rank_selection_internal.h>
#include <orbimg/measure/pixel_info.h>

namespace orb {

// A tile along one side of the rectangle.
struct TileSpan {
  int begin;
  int extent;
};

// Steps of `size` from `from` up to `to`; none for a size below 1. The last tile is the smaller one that remains.
// Intended: the place of that one is counted from 0, not from `from`. So in a rectangle that does not begin at 0 the
// last tile usually keeps its size and reaches past the rectangle; as does the only tile of a shorter side.
inline std::vector<TileSpan> SpanTiles(int from, int to, int size) {
  std::vector<TileSpan> spans;
  if (size < 1) return spans;
  int const remainder = (to - from) % size;
  std::int64_t const count = (to - from) / size + (remainder != 0 ? 1 : 0);
  int extent = size;
  for (std::int64_t begin = from; begin < to; begin += size) {
    spans.push_back(TileSpan{static_cast<int>(begin), extent});
    if (remainder != 0 && begin == (count - 2) * size) extent = remainder;
  }
  return spans;
}

// Rows of tiles from the top, each from the left.
template <typename Tile>
std::vector<Tile> LayTiles(std::vector<TileSpan> const& columns, std::vector<TileSpan> const& rows) {
  std::vector<Tile> tiles;
  tiles.reserve(columns.size() * rows.size());
  for (TileSpan const& row : rows) {
    for (TileSpan const& column : columns) {
      Tile tile;
      tile.left = column.begin;
      tile.top = row.begin;
      tile.width = column.extent;
      tile.height = row.extent;
      tiles.push_back(tile);
    }
  }
  return tiles;
}

// As laid, so that it may reach past the image.
template <typename Tile>
CRect RectOf(Tile const& tile) {
  auto const end = [](int begin, int extent) {
    std::int64_t const sum = static_cast<std::int64_t>(begin) + extent;
    return static_cast<int>(std::min<std::int64_t>(sum, std::numeric_limits<int>::max()));
  };
  return CRect(tile.left, tile.top, end(tile.left, tile.width), end(tile.top, tile.height));
}

template <typename Tile>
int CountOf(std::vector<Tile> const& tiles) {
  return static_cast<int>(std::min<std::size_t>(tiles.size(), std::numeric_limits<int>::max()));
}

// Median and standard deviation of plane 0 of `measured`, tile by tile; what lies outside it has no samples. `image`
// reports: message 6182, one unit a tile.
template <typename Tile>
void MeasureTiles(COrbImage& image, COrbImage const& measured, std::vector<Tile>& tiles, int progress) {
  constexpr int kMessage = 6182;
  image.ShowProgressInit(progress, kMessage, CountOf(tiles));
  for (Tile& tile : tiles) {
    Spread const spread = CalcSpread(measured, RectOf(tile), 0);
    tile.median = spread.median;
    tile.stddev = spread.deviation;
    image.ShowProgress(1);
  }
  image.ShowProgressEnd(static_cast<char const*>(nullptr));
}

// The deviation at index n / 2 of n in ascending order, those that are not numbers last; 0.0 without a tile.
template <typename Tile>
double MedianDeviation(std::vector<Tile> const& tiles) {
  if (tiles.empty()) return 0.0;
  std::vector<double> deviations;
  deviations.reserve(tiles.size());
  for (Tile const& tile : tiles) deviations.push_back(tile.stddev);
  auto const count = static_cast<std::int64_t>(deviations.size());
  return SelectAmong(deviations.data(), count, count / 2);
}

}  // namespace orb
