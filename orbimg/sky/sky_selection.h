// CImgSkySelect: finds a patch of empty sky.
//
// This image is cut into square tiles of `size` pixels, and a tile is judged by the standard deviation of its samples
// in plane 0, raw: sky is smooth, stars and nebulae are not. First ask for the median of the deviations, then for the
// first tile at or below a threshold made from it.
//
//   double median = 0.0;
//   image.CalcStddevMedian(32, nullptr, &median, 0);
//   CRect sky;
//   if (image.Do(32, nullptr, 0.9 * median, &sky, 0) != 0) ...
//
// Tiles are laid over the rectangle from its corner; the smaller last ones of a row and of a column take what remains.
// Intended: the place of these is counted from column and row 0, so that in a rectangle with another corner the last
// tile usually keeps its size and reaches past the rectangle, as does a single tile that is larger than the image.
// Beyond the image there are no samples, and they do not count. `size` is at least 1; below that there are no tiles.
//
// Nothing is written, levels and standard points stay. One unit of progress for each tile, message 6182. Scratch
// memory: 40 bytes a tile.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgSkySelect : public COrbImage {
 public:
  CImgSkySelect() = default;
  CImgSkySelect(CImgSkySelect const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgSkySelect& operator=(CImgSkySelect const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // The upper median of the tiles' standard deviations (index n / 2 of n, ascending; tiles with samples that are not
  // numbers last). 0.0 where the rectangle has no tile.
  void CalcStddevMedian(int size, CRect* rect, double* result, int progress);
  // The first tile, in rows from the top and each from the left, whose deviation is at or below `threshold` goes to
  // `found`, as it was laid. 1 if there is one; otherwise 0, and `found` stays.
  int Do(int size, CRect* rect, double threshold, CRect* found, int progress);
};
