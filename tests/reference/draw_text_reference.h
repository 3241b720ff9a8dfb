// Plain transcription of the text: mask, cut, overlay, sum; each composite over the whole image.
#pragma once

#include <string>

#include <orbimg/orbimg.h>

namespace orb::test::reference {

// 0 where the rasteriser gives no letters.
int DrawText(COrbImage& dst, COrbImage& src, CPoint pt, std::string const& text, LOGFONT const& font,
             unsigned long colour, int antialias);

}  // namespace orb::test::reference
