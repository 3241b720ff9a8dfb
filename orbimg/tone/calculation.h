// CImgCalculation: arithmetic of every sample with one number, in raw units.
//
//   operation   result
//   0           s + value
//   1           s - value; with `clamp` non-zero, 0 where that is negative
//   2           s * value
//   3           s / value; s where `value` is 0
//   any other   s
//
// s is the stored sample; no levels are used, and nothing else is clamped. `value` is any number, in raw units for 0
// and 1 and a factor for 2 and 3. Source and destination have the same shape. A null `source` means this image, which
// `source` may also be. Levels and standard points stay. One unit of progress for each row of each plane, message 6109.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgCalculation : public COrbImage {
 public:
  CImgCalculation() = default;
  CImgCalculation(CImgCalculation const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgCalculation& operator=(CImgCalculation const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  void Do(double value, int operation, int clamp, COrbImage* source, CRect* rect, int progress);
};
