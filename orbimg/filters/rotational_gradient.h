// CImgRttnGrdtn: the rotational gradient, which brings out what is not round about a centre, such as jets in the coma
// of a comet (S. M. Larson and Z. Sekanina, Coma morphology and dust-emission pattern of periodic Comet Halley, 1984).
//
// The object is the destination and `src`, another object of the same shape, the source. A rectangle limits what is
// written, never what is read. Levels and standard points stay. Progress counts one unit for each row of each plane.
#pragma once

#include <orbimg/core/orb_image.h>
#include <platform/export.h>

class ORBIMG_API CImgRttnGrdtn : public COrbImage {
 public:
  CImgRttnGrdtn() = default;
  CImgRttnGrdtn(CImgRttnGrdtn const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgRttnGrdtn& operator=(CImgRttnGrdtn const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // With c the source's sample, s1 and s2 the samples at its position turned about (cx, cy) (pixels) by plus and minus
  // `angle` (degrees): v = (gain + 2) * c - s1 - s2, divided by `gain` unless that is 0.0. A gain of 0 gives just
  // 2 c - s1 - s2, and a gain g gives c + (2 c - s1 - s2) / g. With dx = x - cx and dy = y - cy the positions are
  //
  //   theta = atan2(dx, dy), counted from the y axis towards the x axis; rho = sqrt(dx^2 + dy^2)
  //   (rho * sin(theta +- angle) + cx, rho * cos(theta +- angle) + cy)
  //
  // A position inside the image, 0 <= px < width and 0 <= py < height, is read bilinearly, held at the last column and
  // row. Intended: outside it reads 0.0, which brightens the result near the frame. Not clamped. Scratch memory: a few
  // thousand samples. Message 6176.
  void Do(double angle, double gain, double cx, double cy, COrbImage* src, CRect* rect, int progress);

 protected:
  friend struct OrbTestAccess;

  void CalcRect(int& left, int& top, int& right, int& bottom, CRect* rect);
};
