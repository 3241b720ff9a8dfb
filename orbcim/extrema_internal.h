// Smallest and largest of a run of samples.
#pragma once

#include <cstddef>

namespace orb {

struct Extrema {
  float min;
  float max;
};

// Starts from samples[0]; every sample lowers the minimum or raises the maximum if it is strictly beyond it. So a sample
// that is not a number is passed over, but stays if it is the first; of a 0.0 and a -0.0 the earlier one stays. `count` is
// at least 1.
Extrema FindExtrema(float const* samples, std::size_t count);

}  // namespace orb
