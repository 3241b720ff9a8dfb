// CImgColorBalance: an offset for each colour.
//
// On the 256-scale w = v + offset, the offset being `red`, `green` or `blue` for planes 0, 1 and 2, in units of that
// scale (255 is the range of the levels) and any number; a mono image takes `red`, planes beyond the third none. Values
// beyond the levels are carried along: nothing is clamped.
//
// The source is read and the result stored by the levels of plane 0 of this image, whatever the plane: one scale serves
// every colour. So source and destination should share their levels; those of the source count for nothing. Source and
// destination have the same shape; `source` may be this image. Levels and standard points stay. One unit of progress
// for each row of each plane, message 6118.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgColorBalance : public COrbImage {
 public:
  CImgColorBalance() = default;
  CImgColorBalance(CImgColorBalance const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgColorBalance& operator=(CImgColorBalance const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  void Do(double red, double green, double blue, COrbImage* source, CRect* rect, int progress);
};
