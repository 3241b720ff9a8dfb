// CImgSoftBinning: sums blocks of pixels into one, as binning on the chip of a camera does.
//
// d(x, y) = sum of s(u, v) over v from y * binY and u from x * binX, binY rows of binX pixels or as many as the source
// still has, row by row, raw. The sum is a float after each term. It is no mean: a partial block comes out dimmer.
//
// This image, which has the size of `src` before, comes to width / binX by height / binY pixels, rounded up with
// `keepPartial` and down without. With `scaleLevels` its levels are multiplied by binX * binY, so that it looks as
// before; else they stay. `src` is another image. Standard points and centre are cleared. One unit of progress for each
// row of each plane of the result, message 6132.
//
// 1 on success. 0 for lack of memory, and for a bin of no or less than no pixels: no sample has changed then, and
// nothing was reported.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgSoftBinning : public COrbImage {
 public:
  CImgSoftBinning() = default;
  CImgSoftBinning(CImgSoftBinning const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgSoftBinning& operator=(CImgSoftBinning const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  int Do(int binX, int binY, int keepPartial, int scaleLevels, COrbImage* src, int progress);
};
