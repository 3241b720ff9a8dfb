// Plain transcription of the rectangle copy.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

void PixelBlt(COrbImage& dst, int dstX, int dstY, int width, int height, COrbImage& src, int srcX, int srcY,
              bool convert);

}  // namespace orb::test::reference
