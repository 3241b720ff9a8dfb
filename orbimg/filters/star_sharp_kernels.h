// The decision of the star sharp filter between a sample and the rank value under its disk, for a row.
#pragma once

#include <cstddef>

namespace orb {

// low, high and top are the disk's values at the index below the wanted position, at the next one, and at the last.
struct StarSharpRule {
  double fraction;     // of the position, behind its index
  bool isLast;         // the index is the last one: there is nothing to interpolate with
  bool doesKeepPeaks;  // where top is the sample itself
  double threshold;    // of |value / top - 1|; 0.0: none

  bool NeedsTop() const { return doesKeepPeaks || threshold != 0.0; }
};

// `high` is not read if the rule has the last index, nor `top` if it does not need it.
void SharpenStarsRow(float const* src, float const* low, float const* high, float const* top, std::ptrdiff_t count,
                     StarSharpRule const& rule, float* dst);

}  // namespace orb
