// Plain transcription of the line, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

void DrawLine(COrbImage& dst, CPoint from, CPoint to, unsigned long colour);

}  // namespace orb::test::reference
