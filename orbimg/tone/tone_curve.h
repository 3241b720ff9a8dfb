// CImgToneCurve: sampled tone curves, one for all planes and one for each plane of a colour image.
//
// A curve is `count` entries from 0 (black) to 1 (white), or any other numbers, evenly spaced over the 256-scale from 0
// to 255. Within that range a value takes 255 times the entry at or below it: a curve of `count` entries is a staircase
// of `count` steps, not a polygon. Outside,
//
//   below 0    0, but s * value where the curve falls at its start, and the first entry times 255 where it is flat
//              there
//   above 255  s * (value - B) + B, with B the last entry times 255, and s = 0 where the curve falls at its end; B
//              where it is flat there
//
// s is the slope between the two entries at that end, of 1 where the curve is the identity. A value that is not a
// number stays one. Two entries are the least that make sense: one is a constant, none leaves values as they are.
//
// `curves` holds the master curve, and for a colour image the curves of planes 0, 1 and 2 behind it, all of `count`
// entries. A plane's own curve acts first and the master curve on its result; a mono image has the master curve alone.
//
// The source is read and the result stored by the levels of this image, each plane by its own; those of the source
// count for nothing. Source and destination have the same shape; `source` may be this image. Levels and standard points
// stay. Announces one unit of progress for each row of the image and plane, whatever the rectangle, and ticks for those
// in the rectangle: message 6114.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgToneCurve : public COrbImage {
 public:
  CImgToneCurve() = default;
  CImgToneCurve(CImgToneCurve const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgToneCurve& operator=(CImgToneCurve const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  void Do(float** const curves, int count, COrbImage* source, CRect* rect, int progress);

 protected:
  // A value of the 256-scale through one curve.
  double CalcToneCurve(float* curve, int count, double value);
};
