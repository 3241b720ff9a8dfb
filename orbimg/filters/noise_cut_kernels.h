// The decision between a sample and the median around it, for a row.
#pragma once

#include <cstddef>

namespace orb {

struct NoiseLimits {
  bool cutCool;
  double coolThreshold;
  bool cutHot;
  double hotThreshold;
};

// dst[x] = medians[x] where the sample departs from it by more than the limits, otherwise src[x].
void CutNoiseRow(float const* src, float const* medians, std::ptrdiff_t count, NoiseLimits const& limits, float* dst);

}  // namespace orb
