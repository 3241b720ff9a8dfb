#include <tests/reference/sky_tiles_reference.h>

#include <algorithm>

namespace orb::test::reference {

namespace {

int Limit(int v, int most) { return v < 0 ? 0 : v > most ? most : v; }

void Measure(CImgPixelInfo& info, Tile& tile) {
  double unused[3][3];
  double deviation[3];
  double median[3];
  CRect const rect(tile.x, tile.y, std::min(tile.x + tile.width, info.GetWidth()),
                   std::min(tile.y + tile.height, info.GetHeight()));
  info.Calc(rect, unused[0], unused[1], unused[2], deviation, median);
  tile.median = median[0];
  tile.stddev = deviation[0];
}

void Fill(std::vector<Tile>& tiles, int columns, int rows) {
  for (int i = 0; i < columns * rows; ++i) {
    if (tiles[i].value != 0) continue;
    int const row = i / columns;
    int const column = i % columns;
    double sum = 0.0;
    int count = 0;
    for (int c = column; c < columns; ++c) {
      Tile const& donor = tiles[row * columns + c];
      if (donor.value != 0 && donor.filled == 0) {
        sum += donor.median;
        ++count;
        break;
      }
    }
    for (int c = column; c >= 0; --c) {
      Tile const& donor = tiles[row * columns + c];
      if (donor.value != 0 && donor.filled == 0) {
        sum += donor.median;
        ++count;
        break;
      }
    }
    for (int r = row; r < rows; ++r) {
      Tile const& donor = tiles[r * columns + column];
      if (donor.value != 0 && donor.filled == 0) {
        sum += donor.median;
        ++count;
        break;
      }
    }
    for (int r = row; r >= 0; --r) {
      Tile const& donor = tiles[r * columns + column];
      if (donor.value != 0 && donor.filled == 0) {
        sum += donor.median;
        ++count;
        break;
      }
    }
    if (count > 0) {
      tiles[i].value = static_cast<int>(sum / count);
      tiles[i].filled = 1;
    }
  }
}

}  // namespace

std::vector<Tile> MeasureTiles(COrbImage& image, int size, CRect* rect) {
  CImgPixelInfo info;
  info.CopyImage(image, nullptr, nullptr);
  int left = 0;
  int top = 0;
  int right = image.GetWidth();
  int bottom = image.GetHeight();
  if (rect != nullptr) {
    left = Limit(rect->left, right);
    top = Limit(rect->top, bottom);
    right = Limit(rect->right, right);
    bottom = Limit(rect->bottom, bottom);
  }
  int const rx = (right - left) % size;
  int const ry = (bottom - top) % size;
  int const columns = (right - left) / size + (rx != 0 ? 1 : 0);
  int const rows = (bottom - top) / size + (ry != 0 ? 1 : 0);
  std::vector<Tile> tiles;
  int height = size;
  for (int y = top; y < bottom; y += size) {
    int width = size;
    for (int x = left; x < right; x += size) {
      Tile tile{x, y, width, height, 0.0, 0.0, 0, 0};
      Measure(info, tile);
      tiles.push_back(tile);
      if (rx != 0 && x == (columns - 2) * size) width = rx;
    }
    if (ry != 0 && y == (rows - 2) * size) height = ry;
  }
  return tiles;
}

double DeviationMedian(std::vector<Tile> const& tiles) {
  std::vector<double> deviations;
  for (Tile const& tile : tiles) deviations.push_back(tile.stddev);
  std::sort(deviations.begin(), deviations.end());
  return deviations[deviations.size() / 2];
}

Tile const* FirstTileWithin(std::vector<Tile> const& tiles, double threshold) {
  for (Tile const& tile : tiles) {
    if (tile.stddev <= threshold) return &tile;
  }
  return nullptr;
}

void SkyFlat(COrbImage& dst, COrbImage& src, int size) {
  std::vector<Tile> tiles = MeasureTiles(src, size, nullptr);
  int const columns = (dst.GetWidth() + size - 1) / size;
  int const rows = (dst.GetHeight() + size - 1) / size;
  double const limit = 5.0 * DeviationMedian(tiles);
  for (Tile& tile : tiles) tile.value = tile.stddev < limit ? static_cast<int>(tile.median) : 0;
  Fill(tiles, columns, rows);
  CImgFilterBlur blurred;
  blurred.CopyImage(dst, nullptr, nullptr);
  for (Tile const& tile : tiles) {
    for (int y = tile.y; y < tile.y + tile.height && y < dst.GetHeight(); ++y) {
      for (int x = tile.x; x < tile.x + tile.width && x < dst.GetWidth(); ++x) {
        blurred.SetPixelGrayRaw(x, y, static_cast<float>(tile.value), 0);
      }
    }
  }
  COrbImage painted(blurred);
  blurred.GaussianFilter(5.0, &painted, nullptr, 0);
  dst.CopyImage(blurred, nullptr, nullptr);
}

}  // namespace orb::test::reference
