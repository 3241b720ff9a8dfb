// CImgMaskPattern: makes a mask of what lies above a level, and blanks an image through a mask.
//
//   Make   sample = 1.0 where sample <= threshold, otherwise 0.0        (this image becomes the mask)
//   Do     sample = 0.0 where m == 0.0, otherwise it stays              (m: the mask as seen from this pixel)
//
// `threshold` is raw and compared as it is, without rounding it to a sample. What is no number is not at or below it.
//
// The mask of Do, another image of any size, is read in its plane 0 for all planes of this image: shifted by shiftX,
// shiftY pixels, turned by `angle` degrees about its own stdCtr, bilinear, 0.0 outside. Only an exact 0.0 blanks: a
// sample between a 0.0 and a 1.0 of the mask stays, so that a mask that is not in register keeps a border.
//
// Both work in place on the whole image; nothing is clamped, levels and standard points stay. One unit of progress for
// each row of each plane, messages 6180 and 6181.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgMaskPattern : public COrbImage {
 public:
  CImgMaskPattern() = default;
  CImgMaskPattern(CImgMaskPattern const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgMaskPattern& operator=(CImgMaskPattern const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  void Make(double threshold, int progress);
  void Do(COrbImage* mask, double shiftX, double shiftY, double angle, int progress);
};
