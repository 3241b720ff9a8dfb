// The Wiener filter, sample by sample, on the radix 2 transform pass by pass.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

std::vector<float> WienerBlur(int width, int height, double s);

// The whole image.
void Wiener(COrbImage& image, double radius, double noise);

}  // namespace orb::test::reference
