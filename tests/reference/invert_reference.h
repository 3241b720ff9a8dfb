// Plain transcription of the inversion, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

void Invert(COrbImage& dst, COrbImage& src, CRect* rect);

}  // namespace orb::test::reference
