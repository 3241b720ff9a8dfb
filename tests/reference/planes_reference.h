// Plain transcriptions of the changes between mono and colour and of the row shift, sample by sample. The images are
// given their number of planes beforehand.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

void FillColor(COrbImage& color, COrbImage& src);
void FillGray(COrbImage& gray, COrbImage& src);
void LiftUp(COrbImage& image, int rows);

}  // namespace orb::test::reference
