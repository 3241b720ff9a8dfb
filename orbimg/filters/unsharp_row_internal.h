// The unsharp mask of a row.
#pragma once

#include <cmath>

namespace orb {

// (c - b) * strength + c where |m / c - 1.0| reaches the threshold, otherwise c. Intended: a ratio that is not a number
// does not reach it, an infinite one does.
struct UnsharpFormula {
  double strength;
  double threshold;

  [[gnu::always_inline]] float Apply(double c, double b, double m) const {
    double const sharp = (c - b) * strength + c;
    return static_cast<float>(std::fabs(m / c - 1.0) >= threshold ? sharp : c);
  }
};

}  // namespace orb
