// Images over the samples of another image, for a thread of its own.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::host {

// Makes `view` an image over all samples of `image`, with its levels, standard points and centre.
void ShareWhole(COrbImage const& image, COrbImage& view);

// Makes `view` a mono image over rows `top` to `bottom` of one plane, with the levels of that plane.
void ShareStrip(COrbImage const& image, int plane, int top, int bottom, COrbImage& view);

}  // namespace orb::host
