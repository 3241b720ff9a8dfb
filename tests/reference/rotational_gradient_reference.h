// The rotational gradient, sample by sample, by angles.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

void RotationalGradient(COrbImage& dst, double angle, double gain, double cx, double cy, COrbImage& src, CRect* rect);

}  // namespace orb::test::reference
