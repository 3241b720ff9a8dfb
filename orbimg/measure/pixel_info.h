// CImgPixelInfo: maximum, minimum, mean, standard deviation and median of a rectangle, for each plane.
//
// All values are raw samples, in double, of the n pixels in the rectangle:
//
//   mean = (sum of v) / n     deviation = sqrt((sum of (v - mean)^2) / n)     median = sorted v [n / 2]
//
// so the median is the upper of the two middle values where n is even. Each result addresses three doubles, one for
// each plane; entries without a plane become 0, and planes beyond the third are not measured. `median` may be null,
// which saves most of the work. Nothing else is changed, and no progress is reported.
//
// The rectangle is the caller's to keep inside the image: what reaches beyond it has no samples and does not count.
// Without any pixel all results are 0.
//
// Both sums are taken in 16 interleaved partial sums, so the last bits may differ from those of a running sum. Samples
// that are not numbers make mean and deviation not-a-number too; the extremes pass them over, but for one in the
// rectangle's corner, and the median ranks them last.
//
// Scratch memory, for the median only: the rectangle's samples, 4 bytes each, where there are 131072 or fewer;
// otherwise one sixteenth of them, a row and 65536 more, or all where they lie so unevenly that a sample of them
// misleads. Lack of memory is std::bad_alloc.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgPixelInfo : public COrbImage {
 public:
  CImgPixelInfo() = default;
  CImgPixelInfo(CImgPixelInfo const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgPixelInfo& operator=(CImgPixelInfo const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // The square of 2 * (size / 2) + 1 pixels a side around `centre`. Intended: half the size is rounded down, so 0 and 1
  // both mean one pixel, and 2 as well as 3 means 3 by 3.
  void Calc(CPoint centre, int size, double* maximum, double* minimum, double* mean, double* deviation, double* median);
  void Calc(CRect rect, double* maximum, double* minimum, double* mean, double* deviation, double* median);
};

namespace orb {

// CImgPixelInfo::Calc of an image that is no CImgPixelInfo itself.
ORBIMG_API void CalcPixelInfo(COrbImage const& image, CRect rect, double* maximum, double* minimum, double* mean,
                              double* deviation, double* median);

struct Spread {
  double deviation = 0.0;
  double median = 0.0;
};

// Deviation and median of one plane, without the rest of CalcPixelInfo and bit for bit the same.
ORBIMG_API Spread CalcSpread(COrbImage const& image, CRect rect, int plane);

}  // namespace orb
