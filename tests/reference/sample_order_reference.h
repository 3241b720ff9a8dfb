// The order of samples, by comparisons alone: numbers ascending, -0.0 before 0.0, not-a-number with a sign first,
// without last.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

namespace orb::test::reference {

inline bool ComesBefore(float a, float b) {
  if (std::isnan(a) || std::isnan(b)) {
    int const placeOfA = !std::isnan(a) ? 0 : std::signbit(a) ? -1 : 1;
    int const placeOfB = !std::isnan(b) ? 0 : std::signbit(b) ? -1 : 1;
    return placeOfA < placeOfB;
  }
  if (a == b) return std::signbit(a) && !std::signbit(b);
  return a < b;
}

inline void SortAscending(std::vector<float>& samples) { std::sort(samples.begin(), samples.end(), ComesBefore); }

}  // namespace orb::test::reference
