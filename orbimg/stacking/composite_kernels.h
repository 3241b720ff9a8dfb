// A row of the composite: one mode applied to a row of the first source and a sampled row of the second.
#pragma once

#include <cstddef>

#include <orbimg/core/level.h>

namespace orb {

struct Combination {
  int mode;  // other than 0 to 8: a alone
  double ratio;
  bool clamp;
};

// `dst` may be `first`.
void CombineRawRow(Combination const& combination, float const* first, float const* second, std::ptrdiff_t count,
                   float* dst);
void CombineRawRow(Combination const& combination, float const* first, double const* second, std::ptrdiff_t count,
                   float* dst);

// `second` is on the 256-scale already.
void Combine256Row(Combination const& combination, float const* first, Level from, float const* second,
                   std::ptrdiff_t count, Level to, float* dst);
void Combine256Row(Combination const& combination, float const* first, Level from, double const* second,
                   std::ptrdiff_t count, Level to, float* dst);

}  // namespace orb
