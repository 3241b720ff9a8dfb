// Plain transcriptions of auto level: sums in one running sum, the median by a full sort.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

void AutoLevel(COrbImage& image, double low, double high, int perPlane, CRect* rect);
void GetAutoLevel(COrbImage& image, double& low, double& high, CRect* rect);
void AutoLevelByMean(COrbImage& image, double lowFactor, double highFactor, int perPlane, CRect* rect);
void AutoLevelByMedian(COrbImage& image, double lowFactor, double highFactor, int perPlane, CRect* rect,
                       double fixedRange);

}  // namespace orb::test::reference
