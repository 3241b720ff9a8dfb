// Plain transcription of the change of the canvas, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

// `canvas` has its new size.
void Resize(COrbImage& canvas, int anchor, float const* fill, COrbImage& src);

}  // namespace orb::test::reference
