// The filters for stars and nebulae, sample by sample, over images of scratch rows that are lifted up row by row.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

int GetStarSharpFilterNum(double radius);
void StarSharpFilter(COrbImage& dst, double radius, double position, double threshold, int keepPeak, COrbImage& src,
                     CRect* rect);
void StarEnhanceFilter(COrbImage& dst, double sigma, double strength, double threshold, COrbImage& src, CRect* rect);
void NebularSmootherFilter(COrbImage& dst, double sigma, double threshold, double clearRadius, COrbImage& src,
                           CRect* rect);
void DigitalDvlp(COrbImage& dst, double pivot, double weight, COrbImage& src, int const* blurPlane, CRect* rect);

}  // namespace orb::test::reference
