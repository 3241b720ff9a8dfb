// CImgDrawLine: a straight line into this image, as samples.
//
// The line runs from pixel to pixel without smoothing, both ends included, by Bresenham's algorithm (J. E. Bresenham,
// IBM Systems Journal 4, 1965): one sample for each step along the longer side, which at 45 degrees is x. Drawn from
// the other end, the line may take the neighbour of a pixel that lies just between two.
//
// The colour is a COLORREF whose bytes are values on the 256-scale of this image's levels:
//
//   colour image  plane p (0 to 2)  (levelMax[p] - levelMin[p]) * byte p * (1 / 255) + levelMin[p]
//   mono image    the same with plane 0's levels and the byte (largest + smallest of red, green, blue) * 0.5
//
// What lies off the image is left out: the ends may be anywhere. Everything but the line's samples stays. There is no
// rectangle and no progress.
#pragma once

#include <orbimg/core/orb_image.h>
#include <platform/rect.h>

class ORBIMG_API CImgDrawLine : public COrbImage {
 public:
  CImgDrawLine() = default;
  CImgDrawLine(CImgDrawLine const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgDrawLine& operator=(CImgDrawLine const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  void Do(CPoint from, CPoint to, unsigned long colour);

 private:
  void DoMono(CPoint from, CPoint to, unsigned long colour);
  void DoColor(CPoint from, CPoint to, unsigned long colour);
  void DrawPlane(int plane, CPoint from, CPoint to, double byte);
};
