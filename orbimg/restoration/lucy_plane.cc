// One plane: padding, rejection of bad pixels, the first estimate.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <new>

#include <orbimg/restoration/lucy_iteration_internal.h>
#include <orbimg/restoration/plane_arithmetic_internal.h>
#include <orbimg/restoration/plane_memory_internal.h>

namespace orb {

namespace {

// The threshold T of a pixel with background b.
double ThresholdOf(double b, LucyNoise const& noise, double nSigma) {
  double const t = noise.C0() + b;
  if (!(nSigma > 0.0)) return t;
  double const q = t / noise.adu;
  return q < 0.0 ? 0.0 : std::sqrt(q) * nSigma;
}

// Of the good pixels; 1 where that is below 0 or there are none.
double MeanOf(LucyState const& s) {
  double sum = 0.0;
  double weights = 0.0;
  for (std::size_t i = 0; i < s.weight.size(); ++i) {
    sum += static_cast<double>(s.weight[i]) * s.estimate[i];
    weights += s.weight[i];
  }
  double const mean = sum / weights;
  return mean >= 0.0 ? mean : 1.0;
}

// weight of the window, with pixels of `estimate` that are too far below 0 left out.
void SetWeights(LucyState& s, std::vector<float> const& window, LucyNoise const& noise, double nSigma) {
  int const x0 = CentredPosition(s.nx, s.dataWidth);
  int const y0 = CentredPosition(s.ny, s.dataHeight);
  PlaceInPad(window.data(), s.weight.data(), s.nx, s.ny, s.dataWidth, s.dataHeight, x0, y0);
  std::vector<std::int16_t> mask(s.weight.size());
  for (std::size_t i = 0; i < mask.size(); ++i) mask[i] = s.weight[i] != 0.0f ? 1 : 0;
  LucyRejectPixels(s, mask.data(), noise, 1, nSigma, 0);
  for (std::size_t i = 0; i < mask.size(); ++i) s.weight[i] = mask[i] * s.weight[i];
}

void Prepare(LucyState& s, float const* data, float const* psf, int psfWidth, int psfHeight, float const* firstGuess,
             LucyNoise const& noise, double nSigma) {
  int const w = s.dataWidth;
  int const h = s.dataHeight;
  std::size_t const pixels = static_cast<std::size_t>(s.Pixels());
  AssignPlane(s.weight, pixels, 0.0f);
  AssignPlane(s.norm, pixels, 0.0f);
  AssignPlane(s.estimate, pixels, 0.0f);
  s.background.assign(1, 0.0f);
  int const x0 = CentredPosition(s.nx, w);
  int const y0 = CentredPosition(s.ny, h);
  PlaceInPad(data, s.estimate.data(), s.nx, s.ny, w, h, x0, y0);
  std::vector<float> window(static_cast<std::size_t>(w) * static_cast<std::size_t>(h), 1.0f);
  SetWeights(s, window, noise, nSigma);
  float const mean = static_cast<float>(MeanOf(s));
  PlaceInPad(psf, s.norm.data(), s.nx, s.ny, psfWidth, psfHeight, CentredPosition(s.nx, psfWidth),
             CentredPosition(s.ny, psfHeight));
  for (float& v : s.norm) v = v < 0.0f ? 0.0f : v;
  std::fill(window.begin(), window.end(), mean);
  PlaceInPad(firstGuess != nullptr ? firstGuess : window.data(), s.estimate.data(), s.nx, s.ny, w, h, x0, y0);
}

}  // namespace

int LucyRestorePlane(float* data, int w, int h, float const* psf, int psfWidth, int psfHeight, float const* firstGuess,
                     int iterations, double adu, double noise, double chiLimit, double nSigma, COrbImage* progress,
                     int planeNumber) {
  LucyState s;
  s.nx = std::max(w, psfWidth);
  s.ny = std::max(h, psfHeight);
  s.dataWidth = w;
  s.dataHeight = h;
  try {
    Prepare(s, data, psf, psfWidth, psfHeight, firstGuess, {adu, noise}, nSigma);
  } catch (std::bad_alloc const&) {
    return kLucyNoMemory;
  }
  double chiSq = 0.0;
  int const code =
      LucyIterate(&s, adu, noise, iterations, chiLimit, data, 1, 0, &chiSq, 1, kLucyTurbo, 0, progress, planeNumber);
  if (code == kLucyDone) TakeFromPad(s.estimate.data(), data, s.nx, s.ny, w, h);
  return code;
}

void LucyRejectPixels(LucyState const& s, std::int16_t* mask, LucyNoise const& noise, int backgroundCount,
                      double nSigma, int verbose) {
  int const x0 = CentredPosition(s.nx, s.dataWidth) - 1;
  int const y0 = CentredPosition(s.ny, s.dataHeight) - 1;
  if (verbose != 0) {
    std::printf("List of pixels below threshold -%g (-%g sigma)\n", ThresholdOf(s.background[0], noise, nSigma),
                nSigma);
  }
  for (int y = 0; y < s.dataHeight; ++y) {
    for (int x = 0; x < s.dataWidth; ++x) {
      std::size_t const i = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(s.nx) * (y + y0) + x + x0);
      double const b = s.background[backgroundCount > 1 ? i : 0];
      if (mask[i] == 0 || !(s.estimate[i] < -ThresholdOf(b, noise, nSigma))) continue;
      mask[i] = 0;
      if (verbose == 0) continue;
      if (s.nx != s.dataWidth || s.ny != s.dataHeight) {
        std::printf("pixel (%d,%d)  [%d,%d];", x + 1, y + 1, x + x0 + 1, y + y0 + 1);
      } else {
        std::printf("pixel (%d,%d);", x + 1, y + 1);
      }
      std::printf(" value %g\n", s.estimate[i]);
    }
  }
}

}  // namespace orb
