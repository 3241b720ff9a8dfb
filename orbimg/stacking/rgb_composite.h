// CImgRgbCmpst: builds a colour image out of three exposures through red, green and blue filters.
//
//   plane 0 = red,  plane 1 = green,  plane 2 = blue      (raw samples)
//
// Each source is shifted by its dx, dy (pixels), turned by its angle (degrees) about its own standard centre, and read
// where the transformed sampler of COrbImage finds it, bilinear. A mono source is read at its one plane; of a colour
// source, `red` gives plane 0, `green` plane 1, `blue` plane 2. The levels of the planes so read become those of the
// destination's planes, also where the rectangle is empty.
//
// The destination has three planes and its size beforehand; the sources may have any size, one plane or three, and are
// other images than the destination. Standard points stay. One unit of progress for each row, message 6108.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgRgbCmpst : public COrbImage {
 public:
  CImgRgbCmpst() = default;
  CImgRgbCmpst(CImgRgbCmpst const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgRgbCmpst& operator=(CImgRgbCmpst const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // `outside`: the raw value off a source. A null `rect` is the whole image. `chosenPlanes`: three flags, or null for
  // all planes. Intended: with the first set all three planes are written whatever the others say; otherwise plane 0
  // keeps its samples and of the others those are written whose flag is set, and every lock held on this image is
  // released row by row. The levels of all planes are taken over in any case. Scratch memory: up to eight rows of
  // doubles for each source.
  void Do(COrbImage* red, double dxR, double dyR, double angleR, COrbImage* green, double dxG, double dyG,
          double angleG, COrbImage* blue, double dxB, double dyB, double angleB, CRect* rect, int outside,
          int* const chosenPlanes, int progress);
};
