// Plain transcriptions of the histogram, the mean and the extrema, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

int GetHistGram(COrbImage& image, int* hist, int bins, double lo, double hi, int plane, CRect* rect);
float GetAvrGrayRaw(COrbImage& image, int plane);
void FindMinMax(COrbImage& image, int plane, double& min, double& max);

}  // namespace orb::test::reference
