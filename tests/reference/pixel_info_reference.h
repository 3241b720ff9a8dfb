// Plain transcription of a rectangle's statistics: one running sum, a full sort.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

// Each result has room for three planes; `median` may be null. The rectangle lies in the image and is not empty.
void CalcPixelInfo(COrbImage& image, CRect rect, double* maximum, double* minimum, double* mean, double* deviation,
                   double* median);

}  // namespace orb::test::reference
