// What the blur and sharp families make of their parameters.
#pragma once

#include <algorithm>
#include <limits>
#include <vector>

#include <orbimg/core/orb_image.h>
#include <orbimg/core/truncate.h>

namespace orb {

inline int RadiusOfRange(double range) { return std::max(1, TruncateToInt(range)); }

// Twice the whole part: the tails beyond are cut.
inline int RadiusOfSigma(double sigma) {
  return std::max(1, 2 * std::clamp(TruncateToInt(sigma), 0, std::numeric_limits<int>::max() / 2));
}

// One value for all planes.
inline std::vector<double> ForPlanes(COrbImage const& image, double value) {
  return std::vector<double>(static_cast<std::size_t>(image.GetPlanes()), value);
}

}  // namespace orb
