// Plain transcription of the LRGB composite, pixel by pixel, from images and from planes.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

struct Alignment {
  double dx = 0.0;
  double dy = 0.0;
  double angle = 0.0;
  double scale = 1.0;  // of the colour source
};

void LrgbComposite(COrbImage& dst, COrbImage& luminance, Alignment const& placeL, COrbImage& colour,
                   Alignment const& placeC, CRect* rect, int average);

void LabComposite(COrbImage& dst, COrbImage& lPlane, Alignment const& placeL, COrbImage& abPlane,
                  Alignment const& placeC, CRect* rect);

}  // namespace orb::test::reference
