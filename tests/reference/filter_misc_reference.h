// The miscellaneous filters, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

void BkgSmooth(COrbImage& dst, double level, int radius, double strength, COrbImage& src, CRect* rect);
void Custom(COrbImage& dst, int radius, double* weights, COrbImage& src, CRect* rect);
void ContourFilter(COrbImage& dst, int levels, int unbounded, COrbImage& src, CRect* rect);
void NoiseCut(COrbImage& dst, double radius, int cutCool, double coolThreshold, int cutHot, double hotThreshold,
              COrbImage& src, CRect* rect);
int GetMinMaxFilterNmax(double radius);
void MinMaxFilter(COrbImage& dst, double radius, int index, COrbImage& src, CRect* rect);

}  // namespace orb::test::reference
