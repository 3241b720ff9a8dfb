// CImgScroll: shifts an image round its edges; nothing is lost.
//
//   axis 0:         d(x, (height - a + y) % height) = s(x, y), a = amount % height: up by `amount` pixels
//   axis non-zero:  d(x, y) = s((width - a + x) % width, y), a = amount % width:    right by `amount` pixels
//
// of every plane, raw; the remainder a has the sign of `amount`, so that a negative amount moves the other way.
// Intended: a positive one moves up on one axis and right on the other. `src` is another image of this one's shape.
// Levels stay; standard points and centre are cleared. One unit of progress for each row of each plane, message 6146.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgScroll : public COrbImage {
 public:
  CImgScroll() = default;
  CImgScroll(CImgScroll const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgScroll& operator=(CImgScroll const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  void Do(int amount, int axis, COrbImage* src, int progress);
};
