// CImgResolution: samples the picture anew, for another number of pixels.
//
// The value at a real position of the source is that of the bilinear sample of COrbImage: held at the last column and
// row, the stored sample at whole positions, otherwise interpolated between the four neighbours.
//
// ByLinear. The output sample (x, y) is the value at (x * old width / new width, y * old height / new height): output 0
// lies on input 0, and the last output short of the far edge. Making an image smaller picks samples and averages none;
// bin it where the noise matters.
//
// ByCubic. With rx = old width / new width and sx = x * rx, and the same for y, the output is the sum of
// h(v - sy) * h(u - sx) * value(u, v) over u = sx - 1, sx, sx + 1, sx + 2 and v likewise, value rounded to float, v
// outside, with
//
//   h(t) = 1 - 2 |t|^2 + |t|^3            for |t| < 1
//        = 4 - 8 |t| + 5 |t|^2 - |t|^3    for 1 <= |t| < 2
//        = 0                              from 2 on
//
// A u below 0 is read at -u, one above W - 1 at (W - 1) - (u - W), for the source's width W, and v likewise.
// Intended: the steps start at the real position, so that all weights but one are 0 up to rounding, and the result is
// all but that of ByLinear. Only what is not finite spreads to all the positions within reach, and a sum has no -0.0.
//
// The operator object has the size and planes of the source at first, and takes its new size here; `src` is another
// image. The source should have 2 columns and 2 rows at least; one alone stands for its own neighbour. Raw samples are
// written, levels stay, standard points and centre are cleared. One unit of progress for each row of each plane,
// message 6110.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgResolution : public COrbImage {
 public:
  CImgResolution() = default;
  CImgResolution(CImgResolution const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgResolution& operator=(CImgResolution const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // 1; 0 where there is no memory for the new size, with samples and size as they were. Scratch memory: six numbers for
  // each new column and one for each new row; ByCubic takes 20 more for each of both.
  int ByLinear(COrbImage* src, int newWidth, int newHeight, int progress);
  int ByCubic(COrbImage* src, int newWidth, int newHeight, int progress);
  // ByLinear.
  int Do(COrbImage* src, int newWidth, int newHeight, int progress);
};
