// Plain transcriptions of the star profile's steps, each sample fetched anew.
#pragma once

#include <vector>

#include <orbimg/orbimg.h>

namespace orb::test::reference {

double StarValue(COrbImage& image, int x, int y);
CPoint ClimbToPeak(COrbImage& image, CPoint point);
// What the four arms hand over, not in order.
std::vector<double> SampleStarSky(COrbImage& image, CPoint peak);
int FindStarBase(COrbImage& image, CPoint peak, double& base);
int FindStarWidth(COrbImage& image, CPoint peak, double base, double& width);
// The whole measurement: 1 and the kept form of the width, or 0.
int MeasureStar(COrbImage& image, CPoint point, double& psf);

}  // namespace orb::test::reference
