// Plain transcriptions of the filters on the small fixed neighbourhoods.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

struct SmallMean {
  float weighted;
  double plain;
};

// Of the sample at (x, y) of one plane.
SmallMean MeanAround(COrbImage& src, int x, int y, int shape, double weight, int plane);
float RankAround(COrbImage& src, int x, int y, int shape, int index, int plane);
double SecondDifference(COrbImage& src, int x, int y, int shape, int plane);
float HighPass(COrbImage& src, int x, int y, int plane);

void SmallUnSharpMask(COrbImage& dst, COrbImage& src, double strength, int shape, double weight, double threshold,
                      int plane, CRect* rect);
void SmallMedian(COrbImage& dst, COrbImage& src, int shape, CRect* rect);
void SmallMinMax(COrbImage& dst, COrbImage& src, int shape, int index, CRect* rect);
void SmallLaplacian(COrbImage& dst, COrbImage& src, int shape, CRect* rect);

}  // namespace orb::test::reference
