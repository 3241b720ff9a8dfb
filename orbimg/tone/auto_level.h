// CImgAutoLevel: sets an image's levels from its own statistics. No sample changes.
//
// The operator object is the image itself. `rect` limits where the statistics are taken (pixels; null is the whole
// image). Raw values are in the image's own units; the brightness of a pixel is 0.299 R + 0.587 G + 0.114 B on the
// 256-scale, brought back to raw units with the levels of plane 0:
//
//   perPlane non-zero: each plane of a colour image has its own raw statistics and its own levels
//   perPlane zero:     a colour image is taken as its brightness, and the levels of all planes are set together
//                      (SetLevel with plane -1: plane 0 takes them, the others move by the same fractions)
//   a mono image:      its raw samples, whatever perPlane
//
// An image of two planes has no brightness; it is treated plane by plane.
//
// An empty rectangle sets no levels, except by Do plane by plane: the extremes are the whole plane's, the histogram is
// empty.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgAutoLevel : public COrbImage {
 public:
  CImgAutoLevel() = default;
  CImgAutoLevel(CImgAutoLevel const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgAutoLevel& operator=(CImgAutoLevel const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // Black and white points at fractions `low` and `high` of the area of a histogram of 5000 classes between the
  // extremes; (0.01, 0.99) cuts about one percent at each end. With range = max - min and total = pixels + 5000:
  //   0 < low < 1:  black = i * range * 0.0002 + min, i the class that makes the count, taken upward, pass
  //                 trunc(total * low)
  //   otherwise:    black = range * low + min; so 0 is the minimum itself
  //   0 < high < 1: white = (i + 1) * range * 0.0002 + min, i the class that makes the count, taken downward, pass
  //                 trunc((1 - high) * total)
  //   otherwise:    white = range * high + min
  // Intended: every class counts one more than its pixels, so that empty stretches take a share too.
  // Intended: plane by plane, and on a mono image, the extremes are those of the whole plane, whatever the rectangle.
  // Progress, message 6168, one unit a row, for brightness only. Scratch memory: about 100 kB, and for brightness a row
  // of doubles; the same for Get.
  void Do(double low, double high, int perPlane, CRect* rect);

  // The fractions at which the present levels of plane 0 stand, as Do counts them; close to what Do was given, as the
  // two walks differ by a class. Brightness on a colour image. The extremes are those of the rectangle. A level outside
  // them gives (level - min) / range. 0.0 and 1.0 where the rectangle is empty. Progress always, message 6167, one unit
  // a row.
  void Get(double& low, double& high, CRect* rect);

  // black = mean - deviation * lowFactor, white = mean + deviation * highFactor, the deviation dividing by the number
  // of pixels. Both sums are taken in 16 interleaved partial sums, so the last bits may differ from those of a running
  // sum.
  void DoByMean(double lowFactor, double highFactor, int perPlane, CRect* rect);

  // The same around the median, the upper of the two middle values. On a mono image a `fixedRange` (raw units) other
  // than 0 sets black to the value at index N / 10 + 1 of all N in ascending order, the last one if there are no more,
  // and white to black + fixedRange. Values that are not numbers come last in the order.
  //
  // Scratch memory: one sixteenth of the rectangle's values, a row and 65536 more, 4 bytes each (8 for brightness); all
  // of its values where there are 131072 or fewer, or where they lie so unevenly that a sample of them misleads.
  void DoByMedian(double lowFactor, double highFactor, int perPlane, CRect* rect, double fixedRange);
};
