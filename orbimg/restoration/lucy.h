// CImgLucy: restores by the iteration of Richardson (1972) and Lucy (1974) with a gaussian point-spread function.
//
//   estimate <- estimate * unblur(weight (data + c0)/(blur(estimate) + c0))/unblur(weight),   c0 = noise^2/adu
//
// for photon noise and read noise (Snyder, 1990), taken as a step whose length is the most likely one along it, and
// from the second iteration on mixed with the step before (Hook and Lucy, 1994). It stops at a reduced chi-square of 1.
//
// The operator stands outside the common frame: the object is source and result, it reports run by run in percent, and
// it stops at ESC.
#pragma once

#include <orbimg/core/orb_image.h>
#include <platform/export.h>
#include <platform/rect.h>

class ORBIMG_API CImgLucy : public COrbImage {
 public:
  // `sigma` [pixels] of the point-spread function, `adu` [electrons a sample unit], `noise` of reading [electrons],
  // `iterations` at most; 0 leaves the mean of each plane. Raw samples; levels stay. A sample below -5 noise/adu is
  // left out. An image of 64 x 64 or more is not padded: what is at one edge reaches over to the other.
  //
  // Intended: a `noise` of 0 leaves a quotient 0/0 where an estimate is 0.
  // Intended: the rectangle counts only if its width or its height differs from the image's, and is not clamped; what
  // of it lies outside the image is taken as 0 and not written back.
  //
  // Messages 6154 to 6157, two a plane and iteration. Returns 1; 0 when cancelled (message box 6149) or for lack of
  // memory (message box 6148, or none where not even the window finds room) or for a rectangle without pixels; the
  // image is then untouched. Intended: ESC between 40 and 90 percent of an iteration drops its step and is forgotten;
  // between 90 and 100 it ends the plane with what there is.
  //
  // Memory: a float for every sample of the window, and for one plane 13 floats for every pixel of the window, which is
  // extended to 64 x 64 at least.
  int Do(double sigma, double adu, double noise, int iterations, CRect* rect, int progress);

 private:
  friend struct OrbTestAccess;

  // exp(-r r/(2 sigma^2))/(sigma^2 6.28318) about (width/2, height/2). Intended: not 2 pi, and only the first element
  // is normalised: it is divided by the sum of all, once for each element. The caller deletes the array; null for lack
  // of memory.
  float* MakeGauss(double sigma, int width, int height);
};
