// Plain transcription of the arithmetic with a constant, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

// A null source is the destination.
void Calculate(COrbImage& dst, double value, int operation, int clamp, COrbImage* src, CRect* rect);

}  // namespace orb::test::reference
