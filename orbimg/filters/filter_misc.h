// CImgFilterMisc: background smoothing, a kernel of the caller's, contours, hot and cool pixels, ranks under a disk.
//
// The object is the destination and `src`, another object of the same shape, the source. A rectangle limits what is
// written, never what is read; null is the whole image. Rows outside the image are mirrored: -1 reads row 1, and the
// row after the last reads the last. Columns outside read the nearest one. Levels and standard points stay.
#pragma once

#include <orbimg/core/orb_image.h>
#include <platform/export.h>

class ORBIMG_API CImgFilterMisc : public COrbImage {
 public:
  CImgFilterMisc() = default;
  CImgFilterMisc(CImgFilterMisc const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgFilterMisc& operator=(CImgFilterMisc const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // Blurs what is dark. Above `level` (raw units) a sample c stays; below it becomes mean * w + c * (1 - w), where the
  // weight w falls from `strength` (1: full, 0: none; more than 1 widens the fade, w is 1 at most) to 0 over a band
  // just below the level. The mean is that of the samples with dx^2 + dy^2 <= radius (pixels, not squared).
  //
  // A colour image is decided for all planes at once, by the source's brightness on the 256-scale against `level` on
  // the 256-scale of the destination's plane 0. Intended: the band is 5 % of the source's level range for a mono image
  // and 16 of 255 for a colour one. A colour destination may have a mono source. Scratch memory: a few rows of doubles.
  // Progress 6123, one unit a row whatever the planes.
  void BkgSmooth(double level, int radius, double strength, COrbImage* src, CRect* rect, int progress);

  // Convolves with (2 radius + 1)^2 weights in row order, narrowed to float and not normalized. A negative radius gives
  // 0.0. Progress 6175, one unit for each row of each plane.
  void Custom(int radius, double* weights, COrbImage* src, CRect* rect, int progress);

  // Draws lines where the brightness on the 256-scale, cut into `levels` (2 at least) steps of 255, changes its step. A
  // sample is 0 where it has a single step around it and up to 4 * 255 on the 256-scale where steps change, by the
  // share of a grid of nine cells over the sample and its left and upper neighbours; each plane takes it by its own
  // levels. `unbounded` 0 holds the steps at 0 and `levels`; otherwise steps go on beyond the levels. Scratch memory: a
  // few rows. Progress 6171, one unit a row whatever the planes.
  void ContourFilter(int levels, int unbounded, COrbImage* src, CRect* rect, int progress);

  // Replaces single outliers by the median m of the disk dx^2 + dy^2 <= radius^2 (pixels): with `cutCool` a sample c
  // below m, with `cutHot` one above, where |m / c - 1| exceeds the threshold (fractions). Intended: the ratio is taken
  // to the sample, so a hot one's is below 1 and a sample of 0.0 always exceeds; one that is not a number does not. The
  // median is the one at index n / 2 of n samples. Scratch memory: up to 128 rows and a tile (disk_rank_internal.h says
  // more), also of MinMaxFilter. Progress 6164, one unit for each row of each plane.
  void NoiseCut(double radius, int cutCool, double coolThreshold, int cutHot, double hotThreshold, COrbImage* src,
                CRect* rect, int progress);

  // How many samples the disk of MinMaxFilter has.
  int GetMinMaxFilterNmax(double radius);

  // The sample at `index` of the disk's, ascending: 0 the least, GetMinMaxFilterNmax(radius) - 1 the largest; an index
  // that the disk does not have gives 0.0. -0.0 comes before 0.0, what is not a number at the ends by its sign.
  // Progress 6153, one unit for each row of each plane.
  void MinMaxFilter(double radius, int index, COrbImage* src, CRect* rect, int progress);
};
