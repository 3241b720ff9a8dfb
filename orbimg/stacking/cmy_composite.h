// CImgCmyComposit: builds a colour image out of three exposures through cyan, magenta and yellow filters.
//
// With c, m and y the raw samples of the three sources at a pixel,
//
//   plane 0 = m + y - c,  plane 1 = c + y - m,  plane 2 = c + m - y
//
// Each source is shifted by its dx, dy (pixels), turned by its angle (degrees) about its own standard centre, and read
// where the transformed sampler of COrbImage finds it, bilinear. A mono source is read at its one plane; of a colour
// source, `cyan` gives plane 2, `magenta` plane 0, `yellow` plane 1.
//
// The levels of plane 0 become the means of those of yellow and magenta, of plane 1 those of cyan and yellow, of plane
// 2 those of cyan and magenta, each at the plane that is read, also where the rectangle is empty. Intended: the sums
// are not halved, though the levels are means; a filter that passes two colours sees twice the light of one.
//
// The destination has three planes and its size beforehand; the sources may have any size, one plane or three, and are
// other images than the destination. Standard points stay. One unit of progress for each row, message 6136.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgCmyComposit : public COrbImage {
 public:
  CImgCmyComposit() = default;
  CImgCmyComposit(CImgCmyComposit const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgCmyComposit& operator=(CImgCmyComposit const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // `outside`: the raw value off a source, which takes part in the sums. A null `rect` is the whole image. Scratch
  // memory: up to ten rows of doubles for each source.
  void Do(COrbImage* cyan, double dxC, double dyC, double angleC, COrbImage* magenta, double dxM, double dyM,
          double angleM, COrbImage* yellow, double dxY, double dyY, double angleY, CRect* rect, int outside,
          int progress);
};
