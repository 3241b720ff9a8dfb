// PSF: how wide the stars of an image are, from the row and the column through each star's peak. No surface is fitted.
//
// The caller hands it points near stars, one by one; each good star adds one width to a list, whose mean or median is
// the image's star size. A sample counts as the plain mean of the raw samples of all planes, on colour images too.
//
//   base   the median of up to 48 samples on the four arms of a cross through the peak, beyond the star
//   half   (peak + base) * 0.5
//   width  ((bottom - top) + (right - left)) * 0.5 [pixels], between the places where the four slopes first come down
//          to half, each interpolated linearly between two pixels; the full width at half maximum
//
// Widths are kept as sqrt(width) * 0.4246609. Intended: the root of the width, not the width; the names PSF below mean
// that form, and FWHM what comes of it by (v * 2.354820045829508)^2, which is the width again but for the rounding of
// the two constants.
//
// Intended: a star without noise on a flat sky is refused. Its slope ends at the first sample that rises again, and
// where none does there is no sky to sample.
#pragma once

#include <vector>

#include <orbimg/core/orb_image.h>

class ORBIMG_API PSF : public CObject {
 public:
  // The image stays the caller's and has to outlive this.
  explicit PSF(COrbImage* measured) : image(measured) {}

  // Climbs from `point` to the next peak and measures there. 1 if a width was added. 0 if there is no sky, no peak
  // above it, no half height on one of the four sides (so for a peak on the image's edge), if the width is 20 pixels or
  // more or no number, for a point outside the image, and for lack of memory.
  int Add(CPoint point);

  int GetCount(void) { return static_cast<int>(widths.size()); }

  // 1 and the result; 0, with *result as it was, for an empty list, or a value at or below 1e-06 or at or above 20.0.
  // The bounds are those of the form that is kept. The median is the entry at index count / 2, the upper of the two
  // middle ones; finding it sorts the list.
  int GetMeanPSF(double* result);
  int GetMedianPSF(double* result);

  // The same as a width in pixels. Intended: *result is written even where 0 comes back; it has no meaning then.
  int GetMeanFWHM(double* result);
  int GetMedianFWHM(double* result);

 private:
  friend struct OrbTestAccess;

  double GetPixelValue(CPoint point);
  CPoint ClimbToPeak(CPoint point);
  int GetBase(CPoint peak, double* base);
  int GetFWHM(CPoint peak, double base, double* fwhm);
  double FwhmToPsf(double fwhm) const;
  double PsfToFwhm(double psf) const;

  COrbImage* image;
  std::vector<double> widths;
};
