#include <algorithm>
#include <cmath>
#include <cstdio>
#include <new>

#include <orbimg/resources/message_table.h>
#include <orbimg/restoration/lucy_acceleration_internal.h>
#include <orbimg/restoration/plane_arithmetic_internal.h>
#include <orbimg/restoration/plane_memory_internal.h>

namespace orb {

namespace {

constexpr int kPreparing = 6154;  // and one more for a plane among others
constexpr int kIterating = 6156;

void StartRun(COrbImage* progress, int message, int first, int second) {
  if (progress == nullptr) return;
  char text[256];
  std::snprintf(text, sizeof(text), LoadString(message), first, second);
  progress->ShowProgressInit(text);
}

void StartPreparing(COrbImage* progress, int planeNumber) {
  StartRun(progress, planeNumber == 0 ? kPreparing : kPreparing + 1, planeNumber, 0);
}

void StartIteration(COrbImage* progress, int planeNumber, int iteration) {
  if (planeNumber == 0) {
    StartRun(progress, kIterating, iteration, 0);
  } else {
    StartRun(progress, kIterating + 1, planeNumber, iteration);
  }
}

void EndRun(COrbImage* progress, char const* text) {
  if (progress != nullptr) progress->ShowProgressEnd(text);
}

int Cancel(COrbImage* progress) {
  EndRun(progress, nullptr);
  return kLucyCancelled;
}

// Pixels that hardly any data reach get the estimate 0.
void LeaveOutTheUnreached(LucyState& s) {
  float const largest = FindPeak(s.norm.data(), s.nx, s.ny).value;
  float const limit = static_cast<float>(0.001 * largest);
  for (std::size_t i = 0; i < s.norm.size(); ++i) {
    if (!(s.norm[i] < limit)) continue;
    s.norm[i] = 1.0f;
    s.estimate[i] = 0.0f;
  }
}

// H, norm, the first model and its chi-square. False: cancelled.
bool Prepare(LucyRun& run, double* chiSq) {
  LucyState& s = run.s;
  float* const work = run.work.data();
  if (!run.Show(5)) return false;
  Peak const peak = FindPeak(s.norm.data(), s.nx, s.ny);
  if (!run.Show(10)) return false;
  ShiftToOrigin(s.norm.data(), work, s.nx, s.ny, peak.x, peak.y);
  if (Fft2Forward(&run.tables, work, s.psfSpectrum.data(), s.nx, s.ny, run.progress, 10, 25) == 0) return false;
  double const zeroFrequency = s.psfSpectrum[0];
  ComplexDivideByReal(s.psfSpectrum.data(), zeroFrequency, s.psfSpectrum.data(), s.Pixels());
  if (!run.Show(30)) return false;
  if (!run.Unblur(s.weight.data(), s.norm.data(), 30, 45, 60)) return false;
  LeaveOutTheUnreached(s);
  if (!run.Blur(s.estimate.data(), s.model.data(), 60, 75, 90)) return false;
  run.PlaceData(work);
  bool isCancelled = false;
  *chiSq = LucyChiSquare(s, work, run.noise, run.backgroundCount, run.progress, 90, 100, &isCancelled);
  return !isCancelled;
}

// The multiplicative factor of every pixel, in work, from the data there. False: cancelled.
bool FindFactors(LucyRun& run) {
  LucyState& s = run.s;
  float* const work = run.work.data();
  LucyRows const rows{s.weight.data(), s.model.data(), work, run.Background()};
  RatioRow(rows, run.noise.C0(), s.Pixels(), work);
  if (!run.Unblur(work, work, 0, 20, 40)) return false;
  ArrayDivide(work, s.norm.data(), work, s.Pixels());
  return true;
}

int TakePlainStep(LucyRun& run) {
  LucyState& s = run.s;
  ArrayMultiply(s.estimate.data(), run.work.data(), s.estimate.data(), s.Pixels());
  return run.Blur(s.estimate.data(), s.model.data(), 40, 65, 90) ? kLucyDone : kLucyCancelled;
}

int TakeSearchedStep(LucyRun& run, int iteration) {
  LucyState& s = run.s;
  float* const step = run.work.data();
  ArrayMultiply(s.estimate.data(), step, step, s.Pixels());
  ArraySubtract(step, s.estimate.data(), step, s.Pixels());
  return LucyAccelerate(run, step, iteration, 40, 90) != 0 ? kLucyDone : kLucyNoMemory;
}

// From one estimate to the next, and its chi-square.
int IterateOnce(LucyRun& run, int iteration, double* chiSq) {
  if (!run.Show(0) || !FindFactors(run)) return kLucyCancelled;
  int const code = run.acceleration == kLucyPlain ? TakePlainStep(run) : TakeSearchedStep(run, iteration);
  if (code != kLucyDone) return code;
  run.PlaceData(run.work.data());
  // Intended: a cancel in there gives 0, which ends the plane as converged.
  *chiSq = LucyChiSquare(run.s, run.work.data(), run.noise, run.backgroundCount, run.progress, 90, 100, nullptr);
  return kLucyDone;
}

int Iterate(LucyRun& run, int iterations, int firstIteration, double chiLimit, double* chiSq, int planeNumber) {
  for (int i = 1; i <= iterations; ++i) {
    StartIteration(run.progress, planeNumber, i);
    int const code = IterateOnce(run, i, chiSq);
    if (code == kLucyCancelled) return Cancel(run.progress);
    if (code != kLucyDone) return code;
    if (run.verbose != 0) {
      if (firstIteration > 0) std::printf("Total Iterations %d  ", firstIteration + i);
      std::printf("Iteration %d : chi-sq = %g\n", i, *chiSq);
    }
    EndRun(run.progress, "");
    if (*chiSq <= chiLimit) {
      if (run.verbose != 0) std::printf(" chi-sq <= %g,  converged\n", chiLimit);
      break;
    }
  }
  return kLucyDone;
}

}  // namespace

int LucyIterate(LucyState* s, double adu, double noise, int iterations, double chiLimit, float const* data,
                int backgroundCount, int firstIteration, double* chiSq, int centred, int acceleration, int verbose,
                COrbImage* progress, int planeNumber) {
  StartPreparing(progress, planeNumber);
  try {
    std::size_t const pixels = static_cast<std::size_t>(s->Pixels());
    AssignPlane(s->model, pixels, 0.0f);
    AssignPlane(s->psfSpectrum, 2 * pixels, 0.0f);
    if (acceleration == kLucyTurbo) {
      AssignPlane(s->prevModelStep, pixels, 0.0f);
      AssignPlane(s->prevStep, pixels, 0.0f);
    }
    LucyRun run{*s, {adu, noise}, data, backgroundCount, centred != 0, acceleration, verbose, progress};
    if (!Prepare(run, chiSq)) return Cancel(progress);
    if (verbose != 0) std::printf("Initial chi-sq = %g\n", *chiSq);
    EndRun(progress, nullptr);
    return Iterate(run, iterations, firstIteration, chiLimit, chiSq, planeNumber);
  } catch (std::bad_alloc const&) {
    return kLucyNoMemory;
  }
}

}  // namespace orb
