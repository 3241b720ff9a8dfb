// CImgSkyFlat: models the smooth background of an image of the sky.
//
// This image is the destination, of the shape of `src`, and gets a model that the image can be divided by or that can
// be subtracted from it, in raw units:
//
//   1. Square tiles of `size` pixels from (0, 0) on, the last of a row and of a column with what remains. A single tile
//      that is larger than the image counts what the image has of it.
//   2. Median and standard deviation of src's plane 0 in each tile.
//   3. The limit is 5.0 times the upper median of the deviations. A tile below it gets the value trunc(median); one
//   that
//      is not, as it holds stars or a nebula, is a hole, and so is one whose value is 0.
//   4. A hole gets trunc(sum / count) of the medians, not truncated, of up to four donors: the nearest tile with a
//   value
//      of its own to the right, to the left, below and above. Holes that were filled are no donors. Without donors it
//      stays 0.
//   5. Plane 0 of this image is painted with the tiles, and all planes are blurred by a Gaussian of sigma 5.0 (radius
//      10), see filter_blur.h.
//
// Intended: the comparison with the limit is strict, so that a source without any noise, whose deviations are all 0,
// has a model of 0. Intended: values are whole numbers, which suits images in counts; scale others up first. Intended:
// the planes beyond plane 0 are not painted, but blurred.
//
// `src` may be this image, as it is measured before anything is painted. `size` is at least 1; below that there are no
// tiles, and the image is only blurred. Values beyond the range of int are held at its ends. Levels and standard points
// stay. Messages 6182 and 6183, one unit for each tile; then 6131, one for each row of each plane. Intended: the last
// one is reported whatever `progress` says. Scratch memory: a copy of this image, and 48 bytes a tile.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgSkyFlat : public COrbImage {
 public:
  CImgSkyFlat() = default;
  CImgSkyFlat(CImgSkyFlat const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgSkyFlat& operator=(CImgSkyFlat const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  void Do(int size, COrbImage* src, int progress);
};
