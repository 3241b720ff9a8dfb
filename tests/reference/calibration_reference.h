// Plain transcriptions of dark and flat, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

// `a` is the flat's mean.
void FlatClbrtn(COrbImage& image, COrbImage& flat, float a);
void DarkClbrtn(COrbImage& image, COrbImage& dark);

}  // namespace orb::test::reference
