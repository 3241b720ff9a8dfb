#include <orbimg/restoration/lucy_acceleration_internal.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <new>

#include <orbimg/restoration/percent_stage_internal.h>
#include <orbimg/restoration/plane_arithmetic_internal.h>

namespace orb {

namespace {

constexpr std::ptrdiff_t kBlock = 256;
constexpr double kNoLimit = 100.0;

template <typename Terms>
void EachTermBlock(std::ptrdiff_t n, Terms terms) {
  for (std::ptrdiff_t i = 0; i < n; i += kBlock) terms(i, std::min(kBlock, n - i));
}

LucyRows RowsFrom(LucyState const& s, float const* data, LucyBackground background, std::ptrdiff_t i) {
  return {s.weight.data() + i, s.model.data() + i, data + i, background.From(i)};
}

// One step along the line, with its blur and the data in a plane.
struct Direction {
  float* step;
  std::vector<float> g;
  std::vector<float> dd;
};

// Makes the direction conjugate to the last one; the last ones take the plain direction's place.
void MixWithLast(LucyRun& run, Direction& d) {
  LucyState& s = run.s;
  double sumA = 0.0;
  double sumB = 0.0;
  EachTermBlock(s.Pixels(), [&](std::ptrdiff_t i, std::ptrdiff_t count) {
    double a[kBlock], b[kBlock];
    TurboTerms(RowsFrom(s, d.dd.data(), run.Background(), i), s.estimate.data() + i, d.g.data() + i,
               s.prevModelStep.data() + i, run.noise.adu, run.noise.C0(), count, a, b);
    for (std::ptrdiff_t k = 0; k < count; ++k) {
      sumA += a[k];
      sumB += b[k];
    }
  });
  double const alpha = -sumA / sumB;
  MixStepRow(alpha, s.Pixels(), d.step, s.prevStep.data());
  MixStepRow(alpha, s.Pixels(), d.g.data(), s.prevModelStep.data());
}

void DropNegativePixels(LucyRun& run, float* step) {
  for (std::ptrdiff_t i = 0; i < run.s.Pixels(); ++i) {
    float& estimate = run.s.estimate[static_cast<std::size_t>(i)];
    if (!(estimate < 0.0f)) continue;
    if (run.verbose != 0) std::printf("Negative pixel (%d): %g\n", static_cast<int>(i + 1), estimate);
    estimate = 0.0f;
    step[i] = 0.0f;
  }
}

// Intended: where the mixed direction cannot be taken in full, it is given up for this iteration.
LucyBounds FindBounds(LucyState& s, Direction& d, bool& isTurbo) {
  std::ptrdiff_t const n = s.Pixels();
  double const most = LucyStepLimit(s.estimate.data(), d.step, n);
  if (!isTurbo) return {1.0, most};
  if (most < 1.0) {
    isTurbo = false;
    std::copy_n(s.prevStep.data(), n, d.step);
    std::copy_n(s.prevModelStep.data(), n, d.g.data());
    return {1.0, LucyStepLimit(s.estimate.data(), d.step, n)};
  }
  return {LucyLowerLimit(s.estimate.data(), d.step, n), most};
}

void Report(bool isTurbo, LucyBounds bounds, double c) {
  std::printf("%s", isTurbo ? "Turbo iteration      " : "Accelerated iteration");
  std::printf("  CMIN = %g, CMAX = %g, C = %g\n", bounds.least, bounds.most, c);
}

}  // namespace

bool LucyRun::Blur(float const* from, float* to, int percentFrom, int middle, int percentTo) {
  if (Fft2Forward(&tables, from, spectrum.data(), s.nx, s.ny, progress, percentFrom, middle) == 0) return false;
  ComplexMultiply(s.psfSpectrum.data(), spectrum.data(), spectrum.data(), s.Pixels());
  return Fft2Inverse(&tables, spectrum.data(), to, s.nx, s.ny, progress, middle, percentTo) != 0;
}

bool LucyRun::Unblur(float const* from, float* to, int percentFrom, int middle, int percentTo) {
  if (Fft2Forward(&tables, from, spectrum.data(), s.nx, s.ny, progress, percentFrom, middle) == 0) return false;
  ComplexConjMultiply(s.psfSpectrum.data(), spectrum.data(), spectrum.data(), s.Pixels());
  return Fft2Inverse(&tables, spectrum.data(), to, s.nx, s.ny, progress, middle, percentTo) != 0;
}

void LucyRun::PlaceData(float* plane) const {
  int const x0 = isCentred ? CentredPosition(s.nx, s.dataWidth) : 1;
  int const y0 = isCentred ? CentredPosition(s.ny, s.dataHeight) : 1;
  PlaceInPad(data, plane, s.nx, s.ny, s.dataWidth, s.dataHeight, x0, y0);
}

int LucyAccelerate(LucyRun& run, float* step, int iteration, int percentFrom, int percentTo) {
  LucyState& s = run.s;
  std::ptrdiff_t const n = s.Pixels();
  bool isTurbo = run.acceleration == kLucyTurbo && iteration >= 2;
  Direction d{step, {}, {}};
  try {
    d.g = MakePlane(static_cast<std::size_t>(n));
    d.dd = MakePlane(static_cast<std::size_t>(n));
  } catch (std::bad_alloc const&) {
    return 0;
  }
  int const middle = (percentTo - percentFrom) / 2 + percentFrom;
  if (!run.Blur(step, d.g.data(), percentFrom, middle, percentTo)) return 1;
  run.PlaceData(d.dd.data());
  if (isTurbo) MixWithLast(run, d);
  DropNegativePixels(run, step);
  LucyBounds const bounds = FindBounds(s, d, isTurbo);
  double const c = LucyLineSearch(s, d.g.data(), d.dd.data(), run.noise, run.backgroundCount, bounds);
  if (run.verbose != 0) Report(isTurbo, bounds, c);
  TakeStepRow(c, n, step, s.estimate.data());
  TakeStepRow(c, n, d.g.data(), s.model.data());
  if (run.acceleration == kLucyTurbo) {
    std::copy_n(step, n, s.prevStep.data());
    std::copy_n(d.g.data(), n, s.prevModelStep.data());
  }
  return 1;
}

double LucyStepLimit(float const* estimate, float const* step, std::ptrdiff_t n) {
  double limit = std::numeric_limits<double>::max();
  bool isLimited = false;
  EachTermBlock(n, [&](std::ptrdiff_t i, std::ptrdiff_t count) {
    double terms[kBlock];
    LimitTerms(estimate + i, step + i, -1.0, count, terms);
    for (std::ptrdiff_t k = 0; k < count; ++k) {
      isLimited = isLimited || step[i + k] < 0.0f;
      if (terms[k] < limit) limit = terms[k];
    }
  });
  return isLimited ? limit : kNoLimit;
}

double LucyLowerLimit(float const* estimate, float const* step, std::ptrdiff_t n) {
  double limit = std::numeric_limits<double>::lowest();
  bool isLimited = false;
  EachTermBlock(n, [&](std::ptrdiff_t i, std::ptrdiff_t count) {
    double terms[kBlock];
    LimitTerms(estimate + i, step + i, 1.0, count, terms);
    for (std::ptrdiff_t k = 0; k < count; ++k) {
      isLimited = isLimited || step[i + k] > 0.0f;
      if (terms[k] > limit) limit = terms[k];
    }
  });
  return isLimited ? limit : -kNoLimit;
}

double LucyLineSearch(LucyState const& s, float const* g, float const* data, LucyNoise const& noise,
                      int backgroundCount, LucyBounds bounds) {
  constexpr int kPasses = 20;
  constexpr double kSmall = 0.01;
  LucyBackground const background{s.background.data(), backgroundCount > 1};
  double c = 1.0;
  for (int pass = 1; pass <= kPasses; ++pass) {
    double s1 = 0.0;
    double s2 = 0.0;
    EachTermBlock(s.Pixels(), [&](std::ptrdiff_t i, std::ptrdiff_t count) {
      double first[kBlock], second[kBlock];
      LineSearchTerms(RowsFrom(s, data, background, i), g + i, c, noise.C0(), count, first, second);
      for (std::ptrdiff_t k = 0; k < count; ++k) {
        s1 += first[k];
        s2 += second[k];
      }
    });
    double change = s1 / s2;
    // Bounds are approached by halving and never reached.
    if (c + change >= bounds.most) {
      change = (bounds.most - c) * 0.5;
    } else if (c + change <= bounds.least) {
      change = (bounds.least - c) * 0.5;
    }
    c += change;
    if (std::abs(change) <= kSmall) break;
  }
  return c;
}

double LucyChiSquare(LucyState const& s, float const* data, LucyNoise const& noise, int backgroundCount,
                     COrbImage* progress, int percentFrom, int percentTo, bool* isCancelled) {
  LucyBackground const background{s.background.data(), backgroundCount > 1};
  PercentReport report(progress);
  PercentStage stage(report, percentFrom, percentTo - percentFrom, s.ny);
  double sum = 0.0;
  std::ptrdiff_t n = 0;
  for (int y = 0; y < s.ny; ++y) {
    if (!stage.Advance(y + 1, s.ny)) {
      if (isCancelled != nullptr) *isCancelled = true;
      return 0.0;
    }
    std::ptrdiff_t const row = static_cast<std::ptrdiff_t>(s.nx) * y;
    EachTermBlock(s.nx, [&](std::ptrdiff_t x, std::ptrdiff_t count) {
      double terms[kBlock];
      n += ChiSquareTerms(RowsFrom(s, data, background, row + x), noise.adu, noise.noise * noise.noise, count, terms);
      for (std::ptrdiff_t k = 0; k < count; ++k) sum += terms[k];
    });
  }
  return sum / static_cast<double>(n - 1);
}

}  // namespace orb
