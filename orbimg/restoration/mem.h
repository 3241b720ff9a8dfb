// CImgMem: restores an image by maximum entropy. Among the images that, blurred by a gaussian point-spread function,
// fit the data to within the noise, it looks for the one of largest entropy (mem_solver.h has the mathematics; J.
// Skilling and R. K. Bryan, Mon. Not. R. Astron. Soc. 211, 111 (1984), the method's grounds).
//
// Each plane is restored by itself, on raw samples; levels and standard points stay. Samples are taken to be positive
// and the background part of the data. A window whose sides are not powers of two is worked on in the middle of the
// next larger ones, and its margin counts as data of value 0. Convolutions are circular.
//
// Intended: the array of the point-spread function is 63 x 63, and the gaussian's centre stands at its middle, half a
// pixel beyond the middle element: the result lies half a pixel towards lower x and y from the data.
//
// Scratch memory: two copies of the window's samples, and for the plane at work 8 floats a pixel of the power-of-two
// size, 10 where that is larger than the window.
#pragma once

#include <orbimg/core/orb_image.h>

class ORBIMG_API CImgMem : public COrbImage {
 public:
  CImgMem() = default;
  CImgMem(CImgMem const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgMem& operator=(CImgMem const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // In place.
  //   sigma       of the gaussian point-spread function, in pixels, above 0
  //   noise       standard deviation of the noise, raw units, above 0
  //   iterations  the most main iterations; 0 or below: only the solver's tolerances stop it (0.5 root mean square and
  //               1.0 largest step in raw units, 0.05 root mean square change of the residual in units of the noise)
  //   rect        the window; null: the whole image. Intended: only its size counts for whether it is taken: one of the
  //               image's size is the whole image wherever it lies. It is not limited to the image; what lies outside
  //               counts as data of value 0.
  //   progress    nonzero: texts, percentages, and ESC stops it
  //
  // 1 done. 0, with every sample as it was: ESC (message box 6151), failure of the solver (box 6150; Intended: also for
  // a noise that is not above 0), no memory for the window (no box). Messages 6158, 6162 and 6160 for each iteration;
  // of images with more than one plane 6159, 6163 and 6161.
  int Do(double sigma, double noise, int iterations, CRect* rect, int progress);

 private:
  friend struct OrbTestAccess;

  // value (x, y) = exp(-((x - width/2)^2 + (y - height/2)^2) / (2 sigma^2)) / (sigma^2 6.28318). Intended: only the
  // first element is divided by the sum of all, as many times as there are elements. The caller deletes the array; null
  // if there is no memory.
  float* MakeGauss(double sigma, int width, int height);
  // True for a result code of a good ending; otherwise shows a message box.
  bool ShowOutcome(int code);
};

// One plane of w x h floats. `in` is work space and destroyed; `psf` has odd sides. `variance` is that of the noise.
// `planeNumber` counts from 1, 0 for the only plane; `progress` may be null. Returns a result code of MemSolve, or 1
// for a psf with an even side, or 7 for lack of memory.
ORBIMG_API int MemRestorePlane(float* in, float* out, int w, int h, float const* psf, int psfWidth, int psfHeight,
                               double variance, int iterations, COrbImage* progress, int planeNumber);
