// CImgDrawText: a text into this image, as samples.
//
// With c the part of a pixel that letters cover (0 or 1; with `antialias` also 0.25, 0.5 and 0.75, from letters drawn
// twice as large) and the upper left corner of the text's box at `pt`, each pixel on the 256-scale becomes
//
//   src * (1 - c) + colour * c
//
// where the colour is the byte of each plane of a colour image, and (largest + smallest of red, green, blue) * 0.5 on a
// mono one. `src` is read by its own levels, the result is stored by this image's; values beyond the levels are carried
// along. `src` may be this image. The sum is taken in two composites, first src * (1 - c), then the colour added, each
// stored as floats. Intended: both go over the whole image, so that samples beside the text may change in their last
// bits, and take this image's levels where `src` has others.
//
// The box may lie anywhere; what is off the image is cut. A negative lfHeight is the height of the letters, a positive
// one that of the line, which is also the box's; platform/text_rasterizer.h says how letters are found and drawn.
// `font` is only read. One line, left to right, `&` is a letter. An empty text leaves src through both composites.
// Levels and standard points stay. There is no rectangle and no progress.
//
// 1, or 0 where no font can be used, the text is too large, or memory is short; this image may then already have lost
// what lies under the letters. Scratch memory: two bytes for each pixel of the box (with `antialias` of a box twice as
// high and wide) and up to four floats for each pixel of the text.
#pragma once

#include <orbimg/core/orb_image.h>
#include <platform/logfont.h>
#include <platform/rect.h>

class ORBIMG_API CImgDrawText : public COrbImage {
 public:
  CImgDrawText() = default;
  CImgDrawText(CImgDrawText const& src) : COrbImage(src, nullptr, nullptr) {}
  CImgDrawText& operator=(CImgDrawText const& src) {
    COrbImage::operator=(src);
    return *this;
  }

  // `colour` is a COLORREF.
  int Do(COrbImage* src, CPoint pt, CString const& text, LOGFONT* font, unsigned long colour, int antialias);

 private:
  void Compose(COrbImage* src, COrbImage* background, COrbImage* overlay, CPoint pt);
};
