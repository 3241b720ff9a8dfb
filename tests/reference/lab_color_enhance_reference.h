// Plain transcription of the colour enhancement in Lab planes, pixel by pixel.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

struct LabGains {
  double aPlus;
  double aMinus;
  double bPlus;
  double bMinus;
};

void LabColorEnhance(COrbImage& dst, COrbImage& source, LabGains const& gains, CRect* rect);

}  // namespace orb::test::reference
