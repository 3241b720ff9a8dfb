// Which images have a brightness.
#pragma once

#include <orbimg/core/orb_image.h>

namespace orb {

// Red, green and blue are there. An image of two planes (a and b of Lab) counts as colour, but has no brightness: its
// plane 0 stands for it, as in a mono image.
inline bool HasBrightness(COrbImage const& image) { return image.IsColor() != 0 && image.GetPlanes() >= 3; }

}  // namespace orb
