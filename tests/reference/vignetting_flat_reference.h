// Plain transcription of the two synthetic flat fields, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

void RadialFlat(COrbImage& dst, COrbImage& src, CPoint center, double falloff, double level, CRect* rect);
void LinearFlat(COrbImage& dst, COrbImage& src, CPoint from, CPoint to, double slope, CRect* rect);

}  // namespace orb::test::reference
