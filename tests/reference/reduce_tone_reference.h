// Plain transcription of the posteriser, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

void ReduceTone(COrbImage& dst, int levels, COrbImage& src, CRect* rect);

}  // namespace orb::test::reference
