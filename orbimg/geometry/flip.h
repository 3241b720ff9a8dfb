// CImgFlip: mirrors an image.
//
//   mode 0 (upside down):   d(x, y) = s(x, height - 1 - y)    message 6127
//   mode 1 (left to right): d(x, y) = s(width - 1 - x, y)     message 6128
//
// of every plane, raw. `src` is another image of this one's shape. Levels stay. Intended: standard points and centre
// stay too, where all other operators that move samples clear them. Any other mode changes nothing; its run starts with
// message 6128 and ends at once. One unit of progress for each row of each plane.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgFlip : public COrbImage {
 public:
  CImgFlip() = default;
  CImgFlip(CImgFlip const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgFlip& operator=(CImgFlip const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  void Do(int mode, COrbImage* src, int progress);
};
