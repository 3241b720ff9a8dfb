// CImgCrop: cuts a rectangle out of an image.
//
// d(x, y) = s(left + x, top + y), of every plane, raw. This image comes to the size of the rectangle, and gets new
// memory for it; a rectangle without an area leaves an empty image, which is a success.
//
// `rect` is to lie inside `src`, another image; it is not limited to it. What it has beyond the source becomes 0.0.
// Levels stay; standard points and centre are cleared. Progress: message 6172, a tick for each row of each plane.
// Intended: twice the ticks are announced, so that the bar ends near half way.
//
// 1 on success. 0 for lack of memory and for a rectangle whose right lies left of its left, or its bottom above its
// top: then no sample has changed, and nothing was reported.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgCrop : public COrbImage {
 public:
  CImgCrop() = default;
  CImgCrop(CImgCrop const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgCrop& operator=(CImgCrop const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  int Do(CRect rect, COrbImage* src, int progress);
};
