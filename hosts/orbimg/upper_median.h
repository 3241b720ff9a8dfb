// The median as the library means it: the entry at index n / 2 of the sorted values, never a mean of two.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace orb::host {

// Puts the values in another order; 0 if there are none.
inline float TakeUpperMedian(std::vector<float>& values) {
  if (values.empty()) return 0.0f;
  auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace orb::host
