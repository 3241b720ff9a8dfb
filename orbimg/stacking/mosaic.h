// CImgMosic: pastes two images into one larger canvas.
//
// The operator object is the canvas. `first` lies on it at the whole-pixel offset ox, oy. `second` lies at ox + dx,
// oy + dy (pixels), turned by `angle` degrees about its standard centre, read where the transformed sampler of
// COrbImage finds it, bilinear. With a the sample of `first` and b that of `second`, a pixel becomes
//
//   (a + b) * 0.5   with `average` non-zero, also where only one source covers it: the seam drops to half there
//   a               off `second`
//   b               off `first`
//   by `mode`       where both cover it
//
// so that a pixel off both shows the a of a pixel off `first`. The modes, on a mono canvas and on a colour one, where
// all three planes come from the same source:
//
//   0 overwrite   b
//   1 key         a where b is close to `key`, otherwise b. Close: |key - b|, in colour summed over the planes, is
//                 below the tolerance. So the blank background of `second` lets `first` shine through.
//   2 lighter     the lighter of the two, a in a tie; in colour the one of greater 0.299 R + 0.587 G + 0.114 B
//   3 darker      the darker of the two, a in a tie
//   any other     a
//
// `to256` zero works on raw samples, with 0 off the sources and a tolerance of 1/256 of the canvas's levelRange of
// plane 0. Non-zero works on the 256-scale, each source by its own levels, key and result by those of the canvas, with
// a tolerance of 1. Off a source its value is then `outside[0]`, but 0 off `first` on a colour canvas.
//
// The canvas has its shape beforehand, one plane or three; the sources have any size, one plane or three, and are other
// images than the canvas. A mono canvas sees a colour source as its brightness, a colour canvas a mono source as gray.
// Levels and standard points stay; nothing is clamped. One unit of progress for each row, whatever the planes, message
// 6135.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgMosic : public COrbImage {
 public:
  CImgMosic() = default;
  CImgMosic(CImgMosic const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgMosic& operator=(CImgMosic const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // `key`: three raw values, one a plane, read in mode 1 only (a mono canvas reads the first). `outside`: one value,
  // read with `to256` only. Either may be null where it is not read. A null `rect` is the whole canvas. Scratch memory:
  // up to about two dozen rows of doubles.
  void Do(COrbImage* first, int ox, int oy, COrbImage* second, double dx, double dy, double angle, int mode,
          float* const key, float* const outside, int to256, int average, CRect* rect, int progress);
};
