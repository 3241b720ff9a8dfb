// Plain transcription of the mask and of the blanking through it, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

void MakeMask(COrbImage& image, double threshold);
void BlankThroughMask(COrbImage& image, COrbImage& mask, double shiftX, double shiftY, double angle);

}  // namespace orb::test::reference
