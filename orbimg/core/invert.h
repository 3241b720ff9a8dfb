// CImgInvert: turns bright into dark within the levels.
//
// On the 256-scale u = 255.0 - v, with v by the source's levels and u stored by the destination's, each plane by its
// own. Values beyond the levels are carried along: nothing is clamped. Point operator: `src` may be this image. Levels
// and standard points stay. One unit of progress for each row of each plane, message 6124.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgInvert : public COrbImage {
 public:
  CImgInvert() = default;
  CImgInvert(CImgInvert const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgInvert& operator=(CImgInvert const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  void Do(COrbImage* src, CRect* rect, int progress);
};
