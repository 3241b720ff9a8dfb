// Plain transcriptions of the operators that move samples, sample by sample. Each leaves in `dst` all that the operator
// leaves there, and returns what it returns.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

void Flip(COrbImage& dst, int mode, COrbImage& src);
int Rotate(COrbImage& dst, double angle, double const* fill, COrbImage& src, int resize);
int Rotate90(COrbImage& dst, int direction, COrbImage& src);
void Rotate180(COrbImage& dst, COrbImage& src);
void Scroll(COrbImage& dst, int amount, int axis, COrbImage& src);
int Crop(COrbImage& dst, CRect rect, COrbImage& src);  // within `src`
int SoftBinning(COrbImage& dst, int binX, int binY, int keepPartial, int scaleLevels, COrbImage& src);

}  // namespace orb::test::reference
