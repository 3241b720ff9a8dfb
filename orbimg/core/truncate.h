// From floating numbers to integers without undefined results.
#pragma once

#include <limits>

namespace orb {

// Truncated toward zero and held at the range of int; 0 where v is not a number.
inline int TruncateToInt(double v) {
  constexpr double kLowest = std::numeric_limits<int>::min();
  constexpr double kHighest = std::numeric_limits<int>::max();
  if (v != v) return 0;
  if (v <= kLowest) return std::numeric_limits<int>::min();
  return v < kHighest ? static_cast<int>(v) : std::numeric_limits<int>::max();
}

}  // namespace orb
