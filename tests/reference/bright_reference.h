// Plain transcription of brightness and contrast, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

void Bright(COrbImage& dst, double brightness, double contrast, double pivot, COrbImage& src, CRect* rect);

}  // namespace orb::test::reference
