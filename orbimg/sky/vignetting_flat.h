// CImgFlat: corrects the fall-off of light by a flat field that is worked out, not measured.
//
// Two forms, on raw samples and without levels. x, y are the pixel's column and row; src is its sample.
//
//   radial   f = ((x - center.x)^2 + (y - center.y)^2) * falloff + level;  level / f * src,  255.0 where f <= 0
//   linear   src - (x * c + y * s - m) * slope
//
// Radial: `falloff` is the change of the flat field per squared pixel, `level` its value at the centre, in any unit
// that both share. A negative falloff raises the corners, which corrects vignetting: for a field that falls to the
// share q at r pixels from the centre, level is 1 and falloff (q - 1) / r^2. Intended: 255.0 whatever the levels are, a
// bright mark where the flat field is no longer above 0.
//
// Linear: (c, s) is the unit vector along from -> to, and `slope` the rise in raw units per pixel along it, which is
// taken off. With t = (to.y - from.y) / (to.x - from.x): c = sqrt(1 / (t^2 + 1)), negative where to.x < from.x, and
// s = c * t. Intended: m is the middle of the two rows, (from.y + to.y) / 2 truncated and held in 16 bits with its
// sign, also for a ramp along x, which is therefore not 0 between the points. `extra` is not read. The points differ in
// x; otherwise the result is no number.
//
// Point operator: `src`, of this image's shape, may be this image. Nothing is clamped; levels and standard points stay.
// One unit of progress for each row of each plane, message 6139.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgFlat : public COrbImage {
 public:
  CImgFlat() = default;
  CImgFlat(CImgFlat const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgFlat& operator=(CImgFlat const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  void Do(COrbImage* src, CPoint center, double falloff, double level, CRect* rect, int progress);
  void Do(COrbImage* src, CPoint from, CPoint to, double slope, double extra, CRect* rect, int progress);
};
