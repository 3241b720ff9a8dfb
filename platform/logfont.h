// A wish for a font. The members that the text rasteriser reads; heights and widths are in pixels.
#pragma once

#include <string>

struct LOGFONT {
  int lfHeight = 0;  // above 0: height of a line; below 0: height of the letters; 0: a default
  int lfWidth = 0;   // mean width of the letters; 0: as the face has it
  int lfWeight = 0;  // 0 to 1000; 400 is regular, 700 is bold
  bool lfItalic = false;
  std::string lfFaceName;  // UTF-8; empty: a default face
};
