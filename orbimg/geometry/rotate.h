// CImgRotate: turns an image, by any angle or by quarters.
//
// Do, by `angle` degrees clockwise, sample by sample from the source, bilinear, raw:
//
//   p = x - cx - dx, q = cy - y + dy, with (cx, cy) = (width / 2, height / 2) of the source in whole pixels and
//   (dx, dy) half of what this image is larger than the source
//   d(x, y) = s(p cos - q sin + cx, cy - (p sin + q cos)), and fill[plane], a raw value, where that lies off the source
//
// With `resize` this image grows to hold all of the source (see orb::FindTurnedSize); without, it keeps its size and
// corners are cut. `fill` has a value for each plane. Returns 1; 0 for lack of memory, no sample having changed.
// Intended: an angle of exactly 0.0 returns 1 and does nothing else: nothing is written, cleared or reported.
// Levels stay. Standard points are cleared; the centre becomes (width / 2, height / 2) of this image before it grows.
// The source's centre is moved during the run and put back after it. Scratch memory: about eight doubles a column.
//
// Do90: a quarter turn, exact. This image comes to its own height by its own width and takes the levels of `src`.
//
//   direction 0 (to the left):          d(x, y) = s(source width - 1 - y, x)
//   direction non-zero (to the right):  d(x, y) = s(y, source height - 1 - x)
//
// Returns 1; 0 for lack of memory, no sample having changed.
//
// Do180: half a turn, exact: d(x, y) = s(width - 1 - x, height - 1 - y). Size and levels stay.
//
// Both clear standard points and centre. In all, `src` is another image of this one's shape, and progress is one unit
// for each row of each plane of the result, message 6112.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgRotate : public COrbImage {
 public:
  CImgRotate() = default;
  CImgRotate(CImgRotate const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgRotate& operator=(CImgRotate const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  int Do(double angle, double* fill, COrbImage* src, int resize, int progress);
  int Do90(int direction, COrbImage* src, int progress);
  void Do180(COrbImage* src, int progress);
};

namespace orb {

// The size to which an image grows when it is turned by `angle` degrees: from the lowest to the highest of its turned
// corners, each coordinate rounded up, and of the middle. A pixel may be cut on the left and on top.
ORBIMG_API CSize FindTurnedSize(int width, int height, double angle);

}  // namespace orb
