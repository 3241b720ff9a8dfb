// Plain transcription of equalisation by rank: one scan of the plane for each class, and a list of its pixels.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

// Planes whose extrema are finite and differ.
void Equalize(COrbImage& dst, COrbImage& src);

}  // namespace orb::test::reference
