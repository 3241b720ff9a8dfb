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

struct Donors {
  double sum = 0.0;
  int count = 0;

  // Whether the tile is a donor: one with a value of its own.
  bool Take(CSkyFlatTile const& tile) {
    if (tile.value == 0 || tile.filled != 0) return false;
    sum += tile.median;
    ++count;
    return true;
  }
};

// The nearest donor in each direction: right, left, down, up.
Donors FindDonors(TileGrid& grid, std::ptrdiff_t row, std::ptrdiff_t column) {
  Donors donors;
  for (std::ptrdiff_t c = column; c < grid.columns && !donors.Take(grid.At(row, c)); ++c) continue;
  for (std::ptrdiff_t c = column; c >= 0 && !donors.Take(grid.At(row, c)); --c) continue;
  for (std::ptrdiff_t r = row; r < grid.rows && !donors.Take(grid.At(r, column)); ++r) continue;
  for (std::ptrdiff_t r = row; r >= 0 && !donors.Take(grid.At(r, column)); --r) continue;
  return donors;
}

void FillHoles(TileGrid& grid) {
  for (std::ptrdiff_t row = 0; row < grid.rows; ++row) {
    for (std::ptrdiff_t column = 0; column < grid.columns; ++column) {
      CSkyFlatTile& tile = grid.At(row, column);
      if (tile.value != 0) continue;
      Donors const donors = FindDonors(grid, row, column);
      if (donors.count == 0) continue;
      tile.value = orb::TruncateToInt(donors.sum / donors.count);
      tile.filled = 1;
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
