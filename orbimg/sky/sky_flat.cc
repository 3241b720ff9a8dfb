#include <orbimg/sky/sky_flat.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/core/truncate.h>
#include <orbimg/filters/filter_radius_internal.h>
#include <orbimg/filters/gaussian_internal.h>
#include <orbimg/sky/sky_tile_internal.h>
#include <orbimg/sky/sky_tiles_internal.h>

namespace {

constexpr int kPaintMessage = 6183;
constexpr double kDeviations = 5.0;  // of the median deviation: the limit of a tile of sky
constexpr double kSigma = 5.0;       // pixels

struct TileGrid {
  std::ptrdiff_t columns = 0;
  std::ptrdiff_t rows = 0;
  std::vector<CSkyFlatTile> tiles;  // in rows from the top

  CSkyFlatTile& At(std::ptrdiff_t row, std::ptrdiff_t column) {
    return tiles[static_cast<std::size_t>(row * columns + column)];
  }
};

TileGrid LayGrid(COrbImage const& image, int size) {
  std::vector<orb::TileSpan> const columns = orb::SpanTiles(0, image.GetWidth(), size);
  std::vector<orb::TileSpan> const rows = orb::SpanTiles(0, image.GetHeight(), size);
  return TileGrid{std::ssize(columns), std::ssize(rows), orb::LayTiles<CSkyFlatTile>(columns, rows)};
}

// Intended: strictly below the limit, so that without any deviation there is no tile of sky.
void KeepSky(std::vector<CSkyFlatTile>& tiles) {
  double const limit = kDeviations * orb::MedianDeviation(tiles);
  for (CSkyFlatTile& tile : tiles) tile.value = tile.stddev < limit ? orb::TruncateToInt(tile.median) : 0;
}

bool IsDonor(CSkyFlatTile const& tile) { return tile.value != 0 && tile.filled == 0; }

// The nearest donors on both sides of a hole in a line of tiles, asked for one tile after the other: each tile is
// looked at once or twice, however long the holes are.
class DonorsInLine {
 public:
  template <typename TileAt>
  void MoveTo(std::ptrdiff_t place, std::ptrdiff_t count, TileAt tileAt) {
    if (IsDonor(tileAt(place))) before = &tileAt(place);
    while (next < count && (next <= place || !IsDonor(tileAt(next)))) ++next;
    behind = next < count ? &tileAt(next) : nullptr;
  }

  CSkyFlatTile const* Before() const { return before; }
  CSkyFlatTile const* Behind() const { return behind; }

 private:
  CSkyFlatTile const* before = nullptr;
  CSkyFlatTile const* behind = nullptr;
  std::ptrdiff_t next = 0;
};

// Order fixed: right, left, down, up.
void FillHole(CSkyFlatTile& hole, DonorsInLine const& row, DonorsInLine const& column) {
  double sum = 0.0;
  int count = 0;
  for (CSkyFlatTile const* donor : {row.Behind(), row.Before(), column.Behind(), column.Before()}) {
    if (donor == nullptr) continue;
    sum += donor->median;
    ++count;
  }
  if (count == 0) return;
  hole.value = orb::TruncateToInt(sum / count);
  hole.filled = 1;
}

void FillHoles(TileGrid& grid) {
  std::vector<DonorsInLine> columns(static_cast<std::size_t>(grid.columns));
  for (std::ptrdiff_t row = 0; row < grid.rows; ++row) {
    DonorsInLine inRow;
    for (std::ptrdiff_t column = 0; column < grid.columns; ++column) {
      DonorsInLine& inColumn = columns[static_cast<std::size_t>(column)];
      inRow.MoveTo(column, grid.columns, [&](std::ptrdiff_t c) -> CSkyFlatTile& { return grid.At(row, c); });
      inColumn.MoveTo(row, grid.rows, [&](std::ptrdiff_t r) -> CSkyFlatTile& { return grid.At(r, column); });
      CSkyFlatTile& tile = grid.At(row, column);
      if (tile.value == 0) FillHole(tile, inRow, inColumn);
    }
  }
}

void PaintTile(COrbImage& image, CSkyFlatTile const& tile) {
  CRect const rect = orb::RectOf(tile);
  orb::Bounds const area = orb::ClampRect(&rect, image.GetWidth(), image.GetHeight());
  for (int y = area.top; y < area.bottom; ++y) {
    std::fill_n(image.GetImageAdr(area.left, y, 0, 0, nullptr), area.Columns(), static_cast<float>(tile.value));
  }
}

void Paint(COrbImage& image, std::vector<CSkyFlatTile> const& tiles, int progress) {
  image.ShowProgressInit(progress, kPaintMessage, orb::CountOf(tiles));
  for (CSkyFlatTile const& tile : tiles) {
    PaintTile(image, tile);
    image.ShowProgress(1);
  }
  image.ShowProgressEnd(static_cast<char const*>(nullptr));
}

// Intended: reported also where no progress was asked for.
void Smooth(COrbImage& image) {
  COrbImage painted(image, nullptr, nullptr);
  orb::FilterByGaussian(image, orb::ForPlanes(image, kSigma).data(), painted, nullptr, 1);
}

}  // namespace

void CImgSkyFlat::Do(int size, COrbImage* src, int progress) {
  TileGrid grid = LayGrid(*this, size);
  orb::MeasureTiles(*this, *src, grid.tiles, progress);
  KeepSky(grid.tiles);
  FillHoles(grid);
  Paint(*this, grid.tiles, progress);
  Smooth(*this);
}
