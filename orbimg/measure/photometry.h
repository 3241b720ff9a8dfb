// CImgPhotometry: how wide a star is and how much light it has, above the sky in a ring around it.
//
// The operator object is the image that is measured; nothing in it changes, and no progress is reported. Coordinates
// are pixels.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgPhotometry : public COrbImage {
 public:
  CImgPhotometry() = default;
  CImgPhotometry(CImgPhotometry const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgPhotometry& operator=(CImgPhotometry const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // The full width at half maximum of the star uphill from (x, y), in pixels, as PSF measures it from the mean of the
  // planes; 0.0 where PSF refuses the star.
  double GetFWHM(int x, int y);

  // The whole counts of plane 0 in the star, less those of the sky, truncated:
  //
  //   star   a disk of radius 2 f + 0.5 around (x, y), f the width above
  //   sky    a ring from 3.5 f - 0.5 to 2 more
  //   count  sum(star) - sum(sky) / n(sky) * n(star)
  //
  // Intended: the disk is centred at (x, y), wherever the peak is. Held at the range of int; 0 where the star is
  // refused, and where no pixel of the ring is in the image or one of them is no number.
  int MeasureCount(int x, int y);

  // How far the light of the 3 by 3 pixels around (x, y) spreads beyond the middle one: the sum of the nine values of
  // plane 0, each less `sky`, divided by the middle one less `sky`; 1 for a single bright pixel. 0.0 where not all nine
  // are in the image.
  double MeasureExtent(int x, int y, double sky);

  // Intended: always 9, whatever the arguments; a fixed answer for callers of the interface.
  int MeasureCondensation(int x, int y, int z);
};
