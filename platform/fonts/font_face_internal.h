// A face at a size, and its glyphs in two levels.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <ft2build.h>
#include <platform/fonts/font_files_internal.h>
#include FT_FREETYPE_H

namespace orb {

struct LibraryDeleter {
  void operator()(FT_Library library) const { FT_Done_FreeType(library); }
};
// One for each call that draws: FreeType's objects belong to one thread at a time.
using LibraryPtr = std::unique_ptr<FT_LibraryRec_, LibraryDeleter>;
LibraryPtr MakeLibrary();  // null if it cannot be made

struct FaceDeleter {
  void operator()(FT_Face face) const { FT_Done_Face(face); }
};

// The side of the letters' square, in pixels.
struct EmSize {
  double x = 0.0;
  double y = 0.0;
};

// What is made of upright letters.
struct Emphasis {
  bool bold = false;
  bool italic = false;
};

// The pixels of a glyph. `left` is counted from the pen, `top` upwards from the baseline to the upper edge.
struct Glyph {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  int advance = 0;
  std::vector<std::uint8_t> pixels;  // a byte a pixel, 0 or 1, row 0 on top
};

class FontFace {
 public:
  // What `wished` asks for and the file has not is made up.
  FontFace(FT_Library library, FontFile const& file, Emphasis wished);

  bool IsUsable() const { return face != nullptr; }
  bool SetSize(EmSize size);

  // In units of the letters' square: above and below the baseline, and the mean width of a letter; above 0.
  double Ascent() const;
  double Descent() const;
  double MeanWidth() const;

  // 0 if the face lacks the character.
  FT_UInt FindGlyph(char32_t character) const { return FT_Get_Char_Index(face.get(), character); }
  // Empty, without an advance, if the face cannot give it. Glyph 0 is the sign for a character that is missing.
  Glyph Draw(FT_UInt index) const;

 private:
  void Emphasise() const;

  std::unique_ptr<FT_FaceRec_, FaceDeleter> face;
  Emphasis made;
};

}  // namespace orb
