// CImgLrgbCmpst: gives a colour image the detail of a luminance exposure.
//
// Each source is read where the transformed sampler of COrbImage finds the pixel: shifted by dx, dy pixels and turned
// by `angle` degrees about the source's own standard centre, bilinear; the luminance at its own scale, the colour with
// its coordinates multiplied by `scale`, so that it may be of another size. L of the one and a, b of the other make the
// result:
//
//   (R, G, B) = CColor::LabToRgb(L, a, b)
//   plane p   = R, G or B x 255.0 range (1/255) + levelMin, by the levels of this image's plane
//
// This image has its shape, of three planes, beforehand. Intended: before the first row all three get the levels of the
// luminance's plane 0; those of the colour go nowhere. Standard points stay. Neither source may be this image. An empty
// rectangle sets the levels and ends its run at once. One unit of progress a row, message 6103.
//
// Accuracy: the samples that the formula gives in double with the power function of the C library, to one unit in the
// last place of a float of the larger of the sample and levelMin. Scratch memory: about two dozen rows of doubles.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgLrgbCmpst : public COrbImage {
 public:
  CImgLrgbCmpst() = default;
  CImgLrgbCmpst(CImgLrgbCmpst const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgLrgbCmpst& operator=(CImgLrgbCmpst const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // From images as they are, mono or colour: both are taken to the 256-scale by their own levels, limited to 0 .. 5000,
  // and turned to Lab. L of a colour luminance is CIE's, not its brightness. Off a source the sample is black: L is 0
  // there, or a and b are.
  // `average` non-zero gives the mean of the two sources on the 256-scale instead, neither limited nor turned to Lab
  // and exact to the last bit; off a source the other one is halved. Intended: progress is off then.
  void DoLrgb(COrbImage* luminance, double dxL, double dyL, double angleL, COrbImage* colour, double dxC, double dyC,
              double angleC, double scale, CRect* rect, int average, int progress);

  // From planes: `lPlane` holds L in plane 0, `abPlane` a and b in planes 0 and 1 (COrbImage::MakeLPlane,
  // MakeAbPlane). Nothing is limited. Off a source its planes are 0.
  void DoLab(COrbImage* lPlane, double dxL, double dyL, double angleL, COrbImage* abPlane, double dxC, double dyC,
             double angleC, double scale, CRect* rect, int progress);
};
