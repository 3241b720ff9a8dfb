// Letters as pixels: one line of text in a font of the system's, each pixel either letter or not.
//
// Fontconfig finds the face that comes nearest to the wish, and for a character that this face lacks another one that
// has it, so that Latin and Japanese may stand in one line. FreeType draws in its two-level mode, hinted for it. Bold
// and italic are made from the upright letters where no such face is installed. Characters stand one after the other
// by their advance widths, without kerning, ligatures or other shaping; from left to right.
//
// Calls may come from different threads at the same time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <platform/export.h>
#include <platform/logfont.h>

namespace orb {

// Row 0 on top.
struct TextBox {
  int width = 0;
  int height = 0;
  int missing = 0;                    // characters that no installed face has
  std::vector<std::uint8_t> letters;  // a byte a pixel: 1 where a letter is, 0 elsewhere

  bool IsLetter(int x, int y) const {
    return letters[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)] != 0;
  }
};

// Height of the letters, in pixels, of a font record with a height of 0.
inline constexpr int kDefaultLetterHeight = 16;
// Most pixels of a height or width times the scale, and of a whole box.
inline constexpr int kMostFontPixels = 8192;
inline constexpr std::int64_t kMostBoxPixels = std::int64_t{1} << 28;

// Draws a text (UTF-8) with a font `scale` times as high and as wide. The box is as high as the font's line, so
// `scale` times lfHeight where that is above 0, and as wide as the text's advance, wider where a letter leans out of
// it; what a letter has above or below the line is cut. An empty text has a box of width 0. It is all one line:
// characters that control a device, line feeds among them, leave a blank, and `&` is a letter like any other. Bytes
// that are no UTF-8 become U+FFFD. A character that no face has shows as the face's sign for it, an empty box with
// most, and counts as missing.
//
// False, and `box` as it was, where no usable font is installed, this library was built without fonts, or the letters
// or the box would be larger than the limits above. Lack of memory is std::bad_alloc.
ORB_PLATFORM_API bool RasterizeText(LOGFONT const& font, int scale, std::string const& text, TextBox& box);

// The installed family of that name (letter case does not matter), spelt as the font does: a family that RasterizeText
// will take. "sans-serif", "serif" and "monospace" give what the system takes for them, as does an empty name for its
// default. An empty text where there is none.
ORB_PLATFORM_API std::string FindFontFamily(std::string const& name);

}  // namespace orb
