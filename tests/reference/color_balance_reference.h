// Plain transcription of the offsets of the colours, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

void Balance(COrbImage& dst, double red, double green, double blue, COrbImage& src, CRect* rect);

}  // namespace orb::test::reference
