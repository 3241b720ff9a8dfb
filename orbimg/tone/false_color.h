// CImgFalseColor: brightness as a colour.
//
// A pixel's value v runs from 0 at `low` to 255 at `high`, both in raw units of the source's plane 0:
//
//   mono source    v = (w - lo) / (hi - lo) * 255.0, with w the sample, lo and hi the limits on the 256-scale
//   colour source  u = (s - levelMin - lo) / (hi - lo) * 255.0 for each plane, with s the stored sample, and v their
//                  brightness
//
// The levels are the source's; lo and hi are held as floats. Intended: the colour form does not divide by levelRange,
// so it agrees with the mono one where the range of the levels is 255. v, held as a float, is limited to 0 to 255. With
// `repeat` above 0 the palette runs through `repeat` times: v becomes repeat * v modulo 256.0.
//
//   palette      colours, from 0 to 255
//   0            blue, cyan, green, yellow, red
//   1            black, blue, cyan, green, yellow, red, white. Intended: between two of them only two thirds of the way
//                are gone before the next begins with a jump
//   2            black, dark blue, blue, light blue, white
//   3            cold: black, blue green, nearly white
//   4            warm: black, red, nearly white
//   5            black, red, yellow, white: one colour after another rises
//   any other    gray: v itself
//
// The colour is stored by the levels of this image, each plane by its own. This image is a colour one: on a mono image
// nothing happens, and nothing is reported. The source has its size and one plane or three; a colour source may be this
// image. A value that is not a number gives a colour that is none. Levels and standard points stay. One unit of
// progress for each row, message 6117.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgFalseColor : public COrbImage {
 public:
  CImgFalseColor() = default;
  CImgFalseColor(CImgFalseColor const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgFalseColor& operator=(CImgFalseColor const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  void Do(double low, double high, int palette, int repeat, COrbImage* source, CRect* rect, int progress);

 protected:
  // The colour of one value, each channel 0 to 255.
  void GetFalseColor(float value, int palette, int repeat, float* red, float* green, float* blue);
};
