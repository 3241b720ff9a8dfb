// Plain transcriptions of the centroid and of the fit of two images' standard points.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

struct Centroid {
  double x;
  double y;
};
Centroid CenterOfGravity(COrbImage& image, CRect const* rect);

struct Fit {
  int used;
  double dx;
  double dy;
  double angle;
};
// Leaves `other` as it is: the centre that a fit gives it is tested for itself.
Fit FitOf(COrbImage& image, COrbImage& other);

}  // namespace orb::test::reference
