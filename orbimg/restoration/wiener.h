// CImgWiener: sharpens by dividing the spectrum by that of a gaussian blur, with a noise term that keeps the division
// stable (N. Wiener, 1949).
//
//   Y = F(image on the 256-scale), B = F(blur), result = F-inverse(Y conj(B)/(|B| |B| + noise * largest |B| |B|))
//
// The operator stands outside the common frame: the object is source and result, and it reports in steps of its own.
#pragma once

#include <orbimg/core/orb_image.h>
#include <platform/export.h>
#include <platform/rect.h>

class ORBIMG_API CImgWiener : public COrbImage {
 public:
  // `radius` [pixels] of the blur, whose sigma is radius * 0.707106781373095, so that it goes as exp(-r r/radius^2).
  // `noise`: a fraction of the largest power of the blur's spectrum; 0 is a plain inverse filter, which divides by 0
  // where that spectrum reaches 0. Each plane by itself; levels stay; nothing is clamped.
  //
  // Intended: the rectangle counts only if its width or its height differs from the image's, and is not clamped; what
  // of it lies outside the image is taken as 0 and not written back.
  //
  // The working image is extended to powers of two by its mirrored edges, the last sample standing twice.
  // Intended: the gain at the zero frequency is not corrected. It is sqrt(padded width * padded height) over the sum of
  // the blur's samples, about 1000 sigma^2, and 1/(1 + noise) times that for a noise above 0.
  //
  // Where both sides of the extended image are 64 or more, its transforms are those of real planes. What that changes
  // against transforms of complex ones is, as a root mean square over that of the result, at most
  // 1e-6 (1 + 1/sqrt(noise)).
  //
  // Message 6104, planes * 100 units, of which 25 and then 90 a plane are counted. Intended: a mono run counts to 115
  // of 100. ESC is without effect. Returns 1; 0 for lack of memory and for a rectangle without pixels, the image
  // untouched. Memory: 1.5 floats for a pixel of the extended image, or 4 where a side of that is below 64, and a copy
  // of the rectangle.
  int Do(double radius, double noise, CRect* rect, int progress);
};

// Plane `plane` of an image to the real parts of `data`, paddedWidth * paddedHeight pairs of floats, on the 256-scale;
// the margin on the right and below mirrors the image. A margin is not wider than the image.
ORBIMG_API void LoadPlane(COrbImage* image, int plane, float* data, int paddedWidth, int paddedHeight);

// The real parts back to raw samples; margin and imaginary parts are dropped.
ORBIMG_API void StorePlane(COrbImage* image, int plane, float* data, int paddedWidth);
