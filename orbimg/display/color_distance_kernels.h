// Distances from many colours to one, for the choice of a palette.
#pragma once

#include <cstddef>
#include <vector>

namespace orb {

// Colours side by side, each with the nearest palette colour met so far.
struct ColorList {
  std::vector<int> red;
  std::vector<int> green;
  std::vector<int> blue;
  // Squared distance to the nearest palette colour times 256, plus its index: the smaller of two keys is the nearer
  // colour, and among equals the lower index. 0 for a colour that has left the list.
  std::vector<int> nearest;

  std::ptrdiff_t Size() const { return static_cast<std::ptrdiff_t>(red.size()); }
};

// Takes palette colour `index` into `nearest`.
void LowerNearest(ColorList& colors, int red, int green, int blue, int index);

// The first of the colours whose distance, limited to `limit`, is greatest; -1 if every colour has left the list.
std::ptrdiff_t FindFarthest(ColorList const& colors, int limit);

}  // namespace orb
