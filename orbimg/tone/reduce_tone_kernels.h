// A row of the posteriser.
#pragma once

#include <cstddef>

#include <orbimg/core/level.h>

namespace orb {

inline constexpr int kMostTones = 256;

// v = (s - min) / range * 255.0, limited to 0 to 255
// w = floor(n * v * (1 / 256)) / n * 255.0
// d = range * w * (1 / 255) + min
//
// n is 1 to kMostTones. `dst` may be `src`.
void ReduceToneRow(float const* src, float* dst, std::ptrdiff_t count, Level level, int n);

}  // namespace orb
