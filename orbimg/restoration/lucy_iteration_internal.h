// The restoration of one plane by CImgLucy, step by step.
//
// Notation: F is Fft2Forward, H the spectrum of the point-spread function with 1 at its zero frequency,
// blur(a) = F-inverse(H F(a)), unblur(a) = F-inverse(conj(H) F(a)), b the background, c0 = noise^2/adu.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <orbimg/core/orb_image.h>
#include <platform/export.h>

namespace orb {

enum LucyCode { kLucyDone = 0, kLucyNoMemory = 1, kLucyCancelled = 2 };

// Lengths of steps. At level 2 the step is also mixed with the one before.
enum LucyAcceleration { kLucyPlain = 0, kLucyLineSearch = 1, kLucyTurbo = 2 };

// The working set of one plane; arrays of nx * ny floats unless said otherwise.
struct LucyState {
  int nx = 0;
  int ny = 0;
  int dataWidth = 0;
  int dataHeight = 0;
  std::vector<float> weight;  // 1 over good pixels of the data window, otherwise 0
  std::vector<float> norm;    // first the point-spread function, later unblur(weight)
  std::vector<float> estimate;
  std::vector<float> background;     // one value, or one a pixel
  std::vector<float> model;          // blur(estimate)
  std::vector<float> prevModelStep;  // these two at level 2 only
  std::vector<float> prevStep;
  std::vector<float> psfSpectrum;  // pairs

  std::ptrdiff_t Pixels() const { return static_cast<std::ptrdiff_t>(nx) * ny; }
};

// The noise model: electrons a unit, electrons of read noise.
struct LucyNoise {
  double adu;
  double noise;

  double C0() const { return noise * noise / adu; }
};

// Restores `data`, w * h samples, in place. `firstGuess` (w * h, or null) replaces the plane's mean as the first
// estimate. `progress` may be null. `planeNumber` is 0 for an image of one plane, otherwise counted from 1.
ORBIMG_API int LucyRestorePlane(float* data, int w, int h, float const* psf, int psfWidth, int psfHeight,
                                float const* firstGuess, int iterations, double adu, double noise, double chiLimit,
                                double nSigma, COrbImage* progress, int planeNumber);

// Clears the mask where a pixel of the centred window lies below -T, T = sqrt(q) nSigma with q = (c0 + b)/adu (0 for a
// negative q), or c0 + b without an nSigma above 0.
ORBIMG_API void LucyRejectPixels(LucyState const& s, std::int16_t* mask, LucyNoise const& noise, int backgroundCount,
                                 double nSigma, int verbose);

// From weight, norm (the point-spread function) and estimate of the state to the restored estimate. `data` stands at
// the centre of the plane, or with `centred` 0 in its first corner. `verbose` prints what is done on the standard
// output. At lack of memory the run of messages is not ended.
ORBIMG_API int LucyIterate(LucyState* s, double adu, double noise, int iterations, double chiLimit, float const* data,
                           int backgroundCount, int firstIteration, double* chiSq, int centred, int acceleration,
                           int verbose, COrbImage* progress, int planeNumber);

// Sum of (model - data)^2 over the variance, for pixels with a weight above 0, over their number less one. A cancel
// sets `isCancelled` (which may be null) and gives 0.
ORBIMG_API double LucyChiSquare(LucyState const& s, float const* data, LucyNoise const& noise, int backgroundCount,
                                COrbImage* progress, int percentFrom, int percentTo, bool* isCancelled);

// The smallest -estimate/step over steps below 0; 100 if there is none.
ORBIMG_API double LucyStepLimit(float const* estimate, float const* step, std::ptrdiff_t n);
// The largest -estimate/step over steps above 0; -100 if there is none.
ORBIMG_API double LucyLowerLimit(float const* estimate, float const* step, std::ptrdiff_t n);

struct LucyBounds {
  double least;  // CMIN
  double most;   // CMAX
};
// The factor on the step that makes the data most likely; `g` is the step's blur. Bounds are approached by halving.
ORBIMG_API double LucyLineSearch(LucyState const& s, float const* g, float const* data, LucyNoise const& noise,
                                 int backgroundCount, LucyBounds bounds);

}  // namespace orb
