// What the two composites of a text make of samples that no letter touches.
#pragma once

#include <cstddef>

#include <orbimg/core/level.h>

namespace orb {

// t = src on the 256-scale of `from`, stored by `to` as a float; dst = (t on the 256-scale of `to`) + 0, stored by
// `to`. `dst` may be `src`.
void PassTwiceRow(float const* src, Level from, std::ptrdiff_t count, Level to, float* dst);

}  // namespace orb
