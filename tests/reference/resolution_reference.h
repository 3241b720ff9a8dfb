// Plain transcription of the two ways of sampling anew, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

// The value at a real position, unrounded; the image has 2 columns and 2 rows at least.
double ReadAt(COrbImage& src, double px, double py, int plane);

// `image` has its new size; the source is of the old one.
void ResolutionByLinear(COrbImage& image, COrbImage& src);
void ResolutionByCubic(COrbImage& image, COrbImage& src);

}  // namespace orb::test::reference
