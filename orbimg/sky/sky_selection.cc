#include <orbimg/sky/sky_selection.h>

#include <algorithm>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/sky/sky_tile_internal.h>
#include <orbimg/sky/sky_tiles_internal.h>

namespace {

CSkyTileArray MeasuredTiles(COrbImage& image, int size, CRect* rect, int progress) {
  orb::Bounds const area = orb::ClampRect(rect, image.GetWidth(), image.GetHeight());
  CSkyTileArray tiles =
      orb::LayTiles<CSkyTile>(orb::SpanTiles(area.left, area.right, size), orb::SpanTiles(area.top, area.bottom, size));
  orb::MeasureTiles(image, image, tiles, progress);
  return tiles;
}

}  // namespace

void CImgSkySelect::CalcStddevMedian(int size, CRect* rect, double* result, int progress) {
  *result = orb::MedianDeviation(MeasuredTiles(*this, size, rect, progress));
}

int CImgSkySelect::Do(int size, CRect* rect, double threshold, CRect* found, int progress) {
  CSkyTileArray const tiles = MeasuredTiles(*this, size, rect, progress);
  auto const sky =
      std::find_if(tiles.begin(), tiles.end(), [&](CSkyTile const& tile) { return tile.stddev <= threshold; });
  if (sky == tiles.end()) return 0;
  *found = orb::RectOf(*sky);
  return 1;
}
