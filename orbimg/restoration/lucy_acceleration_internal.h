// What the iteration of CImgLucy has at hand, and how far it goes along a step.
#pragma once

#include <vector>

#include <orbimg/restoration/fft2.h>
#include <orbimg/restoration/lucy_iteration_internal.h>
#include <orbimg/restoration/lucy_kernels.h>
#include <orbimg/restoration/plane_memory_internal.h>

namespace orb {

// One call of LucyIterate: what it was given and its scratch memory. Lack of memory is std::bad_alloc.
struct LucyRun {
  LucyState& s;
  LucyNoise noise;
  float const* data;
  int backgroundCount;
  bool isCentred;
  int acceleration;
  int verbose;
  COrbImage* progress;
  FftTables tables{s.nx, s.ny};
  std::vector<float> work = MakePlane(static_cast<std::size_t>(s.Pixels()));
  std::vector<float> spectrum = MakePlane(2 * static_cast<std::size_t>(s.Pixels()));

  // False: cancelled.
  bool Show(int percent) const { return progress == nullptr || progress->ShowProgress(percent) != 0; }
  // `to` = blur(from), unblur(from); they may be the same. The percentages of the two transforms meet at `middle`.
  // False: cancelled.
  bool Blur(float const* from, float* to, int percentFrom, int middle, int percentTo);
  bool Unblur(float const* from, float* to, int percentFrom, int middle, int percentTo);
  // The data in a cleared plane.
  void PlaceData(float* plane) const;
  LucyBackground Background() const { return {s.background.data(), backgroundCount > 1}; }
};

// Takes the step of iteration `iteration`, counted from 1, from estimate and model: `step` is the plain one. Returns 0
// for lack of memory, otherwise 1. Intended: a cancel drops the step, changes nothing and is forgotten.
int LucyAccelerate(LucyRun& run, float* step, int iteration, int percentFrom, int percentTo);

}  // namespace orb
