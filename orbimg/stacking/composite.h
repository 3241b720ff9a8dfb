// CImgComposit: joins two registered images, pixel by pixel, into a third.
//
// `first` is read at the destination's own pixels. `second` is read where the transformed sampler of COrbImage finds
// it: shifted by dx, dy pixels and turned by `angle` degrees about the standard centre of `second`, bilinear. With a
// the sample of `first` and b that of `second`, the modes are
//
//   0 average              (a + b) * 0.5
//   1 add                  a + b
//   2 weighted             (1 - ratio) * a + ratio * b
//   3 subtract             a - b; with `clamp` non-zero, 0 where that is negative
//   4 multiply             a * b; on the 256-scale b counts as b / 255, held in 0 to 1
//   5 divide               a / b, and a where b is exactly 0; on the 256-scale b counts as b / 255, held between
//                          0.001 / 255 and 1
//   6 absolute difference  |a - b|
//   7 maximum              b where a <= b, otherwise a
//   8 minimum              b where a >= b, otherwise a
//   9 rejection            one of the two, chosen for each pixel: see Abr
//   any other              a, through the 256-scale whatever `to256` says
//
// `to256` non-zero works on the 256-scale, each source by its own levels of the plane, the result by the destination's;
// zero works on raw samples. Nothing is clamped on store. Off `second`, b is 0, but 255 for modes 4 and 5 on the
// 256-scale, where that leaves a as it is. A colour destination is joined plane by plane; a mono `second` then serves
// all planes. A mono destination sees a colour `second` as its brightness.
//
// The destination has its shape beforehand; `first` has at least its size and planes, `second` may have any size.
// `first` may be this image, `second` may not. Levels and standard points stay. One unit of progress for each row,
// whatever the planes, message `messageId`, or 6107 if that is -1. An empty rectangle ends its run at once, without a
// tick.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgComposit : public COrbImage {
 public:
  CImgComposit() = default;
  CImgComposit(CImgComposit const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgComposit& operator=(CImgComposit const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // `ratio` counts in modes 2 and 9, `clamp` in mode 3, `threshold` and `radius` in mode 9. A null `rect` is the whole
  // image. Scratch memory: about two dozen rows.
  void Do(COrbImage* first, COrbImage* second, double dx, double dy, double angle, int mode, double ratio, int to256,
          int clamp, double threshold, int radius, CRect* rect, int progress, int messageId);
  // ratio 0.5, clamp 0, threshold 0.95, radius 0, the whole image, no progress.
  void Do(COrbImage* first, COrbImage* second, double dx, double dy, double angle, int mode, int to256);

  // Rejection: keeps out of the result what is bright in one frame only, by taking one of the two samples.
  //
  // With bs = b * ratio, the result is a where the position in `second` lies off that image, within one pixel of its
  // left or upper edge, or on its last column or row; the lower of a and bs where `radius` is 0. Otherwise the largest
  // samples of both frames in a window of `radius` (at most 2; negative: an empty window) pixels around the pixel, amax
  // and bmax, decide. Bright means above `threshold` (a fraction) of 255 on the 256-scale, and of the frame's own
  // GetMaxPixel(0) or more with raw samples: run CalcMinMax on both frames before.
  //
  //   amax bright  bmax bright   result
  //   no           no            lower of a and bs
  //   no           yes           lower of a and bmax * ratio
  //   yes          no            lower of amax and bs
  //   yes          yes           lower of a and bs if a and b are bright; otherwise whichever of a and bs differs less
  //                              in sum from the pixels of the destination at the upper left, above and on the left,
  //                              and bs in a tie
  //
  // Those neighbours are read as they stand: already joined, or what the destination held before where they lie outside
  // the rectangle. In the first column or row the pixel itself stands for a missing neighbour, with what the
  // destination held before.
  //
  // Angles beyond +-90 degrees are sampled as their mirror image, 120 as 60. `mode` and `clamp` count for nothing. With
  // a `radius` other than 0, `first` may not be this image. Progress counts rows, but ticks for each row of each plane:
  // a colour image runs past 100 %. Levels of plane 0 serve all planes for the pixel and the result, the plane's own in
  // the window.
  void Abr(COrbImage* first, COrbImage* second, double dx, double dy, double angle, int mode, double ratio, int to256,
           int clamp, double threshold, int radius, CRect* rect, int progress, int messageId);

 private:
  float GetOutsideValue(int mode);
};
