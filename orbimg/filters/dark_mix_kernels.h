// How background smoothing mixes samples with their means.
#pragma once

#include <cstddef>

#include <orbimg/core/level.h>

namespace orb {

// A gauge above `level` leaves the sample; in the band just below, the mean's weight falls to 0 towards the level.
struct Fade {
  double level;
  double band;
  double strength;
};

// dst[x] = means[x] * w + (1 - w) * src[x], with w by gauge[x]: raw samples or brightness, as `fade` is.
void MixDarkRow(float const* src, double const* means, double const* gauge, std::ptrdiff_t count, Fade const& fade,
                float* dst);

void GaugeRawRow(float const* samples, std::ptrdiff_t count, double* gauge);
// On the 256-scale.
void GaugePlaneRow(float const* samples, std::ptrdiff_t count, Level level, double* gauge);
void GaugeColourRow(float const* r, float const* g, float const* b, std::ptrdiff_t count, Level const levels[3],
                    double* gauge);

}  // namespace orb
