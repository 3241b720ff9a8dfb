#include <orbcim/extrema_internal.h>

namespace orb {

Extrema FindExtrema(float const* samples, std::size_t count) {
  Extrema found{samples[0], samples[0]};
  for (std::size_t i = 1; i < count; ++i) {
    found.min = samples[i] < found.min ? samples[i] : found.min;
    found.max = samples[i] > found.max ? samples[i] : found.max;
  }
  return found;
}

}  // namespace orb
