// Lines, texts and star marks into an image, in its own pixels, by CImgDrawLine and CImgDrawText.
//
// Colours are those that show through the image's levels; a mono image takes their gray. Samples that no line, and no
// box of a text, covers stay as they are, to the last bit.
#pragma once

#include <string>

#include <hosts/orbimg/frame_transform.h>
#include <orbimg/orbimg.h>

namespace orb::host {

struct TextStyle {
  LOGFONT font;
  COLORREF color = RGB(255, 255, 255);
  bool isSmooth = true;
};

// "#RRGGBB", the number sign may be left out. A HostError that names `option` for anything else.
COLORREF ParseColor(std::string const& option, std::string const& text);

// A HostError where the named family is not installed, or nothing can be drawn at all: no font, or letters too large.
void RequireFont(LOGFONT const& font);

// What became of an annotation.
struct Drawn {
  bool isSeen = false;  // some of it lies on the image
  int missing = 0;      // characters that no installed font has
};

// Both ends included; they may be anywhere.
Drawn AnnotateLine(COrbImage& image, CPoint from, CPoint to, COLORREF color);

// `pt` is the upper left corner. Letters that cannot be drawn for lack of memory are std::bad_alloc.
Drawn AnnotateText(COrbImage& image, CPoint pt, std::string const& text, TextStyle const& style);

// Four strokes around a position and a label on their right, or on their left where the image ends before. An empty
// label leaves the strokes alone.
Drawn AnnotateStar(COrbImage& image, Position const& star, std::string const& label, TextStyle const& style);

}  // namespace orb::host
