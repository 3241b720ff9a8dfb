// CImgLabColorEnhance: strengthens or weakens the colours of an image that is held in Lab planes, and turns it to RGB.
//
// `source` is an image of L, a and b (COrbImage::MakeLabPlane). For each pixel, with c = CColor::LabToRgb(L, a', b'):
//
//   a' = a gainAPlus where a >= 0 (towards red), otherwise a gainAMinus (towards green)
//   b' = b gainBPlus where b >= 0 (towards yellow), otherwise b gainBMinus (towards blue)
//   plane p = c 255.0 range (1/255) + levelMin, c being R, G or B, by the levels of this image's plane
//
// Gains are pure factors: 1 keeps, 0 gives gray, a negative one the opposite colour. Nothing is clamped but the linear
// channels below 0 that LabToRgb cuts. This image has the size of the source and three planes, too; its levels and
// standard points stay. Point operator: `source` may be this image. Intended: progress announces the rows of the whole
// image, whatever the rectangle, and ticks once for each row of the rectangle; message 6134.
//
// Accuracy: the samples that the formula gives in double with the power function of the C library, to one unit in the
// last place of a float of the larger of the sample and levelMin.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgLabColorEnhance : public COrbImage {
 public:
  CImgLabColorEnhance() = default;
  CImgLabColorEnhance(CImgLabColorEnhance const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgLabColorEnhance& operator=(CImgLabColorEnhance const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // gainA for both signs of a, gainB for both signs of b.
  void Do(COrbImage* source, double gainA, double gainB, CRect* rect, int progress);
  void Do(COrbImage* source, double gainAPlus, double gainAMinus, double gainBPlus, double gainBMinus, CRect* rect,
          int progress);
};
