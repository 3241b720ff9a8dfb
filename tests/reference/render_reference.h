// Plain transcription of the rendering to a bitmap block: header, palette, rows.
#pragma once

#include <vector>

#include <orbimg/orbimg.h>

namespace orb::test::reference {

// The bytes of the whole block; empty for a depth that is not rendered. The image has at least one pixel.
std::vector<unsigned char> GetDib(COrbImage& image, int bitCount);

}  // namespace orb::test::reference
