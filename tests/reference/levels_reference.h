// Plain transcriptions of setting and enforcing the levels.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

void SetLevel(COrbImage& image, int plane, double min, double max);
void CutOutOfLevel(COrbImage& image);

}  // namespace orb::test::reference
