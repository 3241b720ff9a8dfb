// Plain transcriptions of the colour composites and of the separations, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

struct Exposure {
  COrbImage* image;
  double dx;
  double dy;
  double angle;
};

// `planes` may be null.
void RgbComposite(COrbImage& dst, Exposure const& red, Exposure const& green, Exposure const& blue, CRect* rect,
                  int outside, int const* planes);
void CmyComposite(COrbImage& dst, Exposure const& cyan, Exposure const& magenta, Exposure const& yellow, CRect* rect,
                  int outside);

// Images that fit; `isSum` tells the class that adds from the one that averages.
void Separation(COrbImage& dst, COrbImage& source, int channel, bool isSum);

}  // namespace orb::test::reference
