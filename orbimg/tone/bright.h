// CImgBright: brightness and contrast.
//
// On the 256-scale, with v the sample,
//
//   w = v + (v - pivot) * contrast / 256 + brightness
//
// `brightness` and `pivot` are values of the 256-scale, 0 to 255 between black and white; `contrast` is in 256ths of
// the slope: 0 leaves it at 1, 256 doubles it, -256 makes everything `pivot`. All three may be any number. Values
// beyond the levels are carried along: nothing is clamped.
//
// The source is read and the result stored by the levels of plane 0 of this image, whatever the plane: one scale serves
// every colour. So source and destination should share their levels; those of the source count for nothing. Source and
// destination have the same shape; `source` may be this image. Levels and standard points stay. One unit of progress
// for each row of each plane, message 6115.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgBright : public COrbImage {
 public:
  CImgBright() = default;
  CImgBright(CImgBright const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgBright& operator=(CImgBright const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  void Do(double brightness, double contrast, double pivot, COrbImage* source, CRect* rect, int progress);
};
