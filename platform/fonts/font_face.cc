#include <algorithm>
#include <cmath>
#include <cstddef>

#include <platform/fonts/font_face_internal.h>
#include FT_OUTLINE_H
#include FT_TRUETYPE_TABLES_H

namespace orb {
namespace {

constexpr double kFixed6 = 64.0;          // FreeType counts pixels in 64ths
constexpr FT_Pos kPixel = 64;             // one of them
constexpr FT_Fixed kLean = 0x3333;        // of made-up italics: 0.2 to the right for one up, in 65536ths
constexpr FT_Pos kLettersPerStroke = 24;  // made-up bold adds this part of the letters' height

int WholePixels(FT_Pos v) { return static_cast<int>((v + kPixel / 2) / kPixel); }

// Bits of a row, the leftmost the highest of its byte, into bytes.
void SpreadRow(unsigned char const* bits, int width, std::uint8_t* pixels) {
  for (int x = 0; x < width; ++x) pixels[x] = bits[x / 8] >> (7 - x % 8) & 1;
}

Glyph GlyphOf(FT_GlyphSlot slot) {
  FT_Bitmap const& bitmap = slot->bitmap;
  Glyph glyph{slot->bitmap_left,
              slot->bitmap_top,
              static_cast<int>(bitmap.width),
              static_cast<int>(bitmap.rows),
              WholePixels(slot->advance.x),
              {}};
  glyph.pixels.resize(static_cast<std::size_t>(bitmap.width) * bitmap.rows);
  for (int y = 0; y < glyph.height; ++y) {
    SpreadRow(bitmap.buffer + static_cast<std::ptrdiff_t>(y) * bitmap.pitch, glyph.width,
              glyph.pixels.data() + static_cast<std::ptrdiff_t>(y) * glyph.width);
  }
  return glyph;
}

}  // namespace

LibraryPtr MakeLibrary() {
  FT_Library library = nullptr;
  return LibraryPtr(FT_Init_FreeType(&library) == 0 ? library : nullptr);
}

FontFace::FontFace(FT_Library library, FontFile const& file, Emphasis wished)
    : made{wished.bold && !file.isBold, wished.italic && !file.isSlanted} {
  FT_Face opened = nullptr;
  if (FT_New_Face(library, file.path.c_str(), file.index, &opened) != 0) return;
  face.reset(opened);
  if (!FT_IS_SCALABLE(opened) || opened->units_per_EM == 0) face.reset();
}

bool FontFace::SetSize(EmSize size) {
  return FT_Set_Char_Size(face.get(), std::lround(size.x * kFixed6), std::lround(size.y * kFixed6), 72, 72) == 0;
}

double FontFace::Ascent() const {
  double const ascent = static_cast<double>(face->ascender) / face->units_per_EM;
  return ascent > 0.0 ? ascent : 1.0;
}

double FontFace::Descent() const { return std::max(-static_cast<double>(face->descender) / face->units_per_EM, 0.0); }

double FontFace::MeanWidth() const {
  auto const* const table = static_cast<TT_OS2 const*>(FT_Get_Sfnt_Table(face.get(), FT_SFNT_OS2));
  if (table != nullptr && table->xAvgCharWidth > 0) {
    return static_cast<double>(table->xAvgCharWidth) / face->units_per_EM;
  }
  return 0.5;
}

void FontFace::Emphasise() const {
  FT_GlyphSlot const slot = face->glyph;
  if (made.italic) {
    FT_Matrix const shear{0x10000, kLean, 0, 0x10000};
    FT_Outline_Transform(&slot->outline, &shear);
  }
  if (made.bold) {
    FT_Pos const em = FT_MulFix(face->units_per_EM, face->size->metrics.y_scale);
    FT_Pos const stroke = std::max(em / kLettersPerStroke / kPixel, FT_Pos{1}) * kPixel;
    FT_Outline_EmboldenXY(&slot->outline, stroke, 0);
    if (slot->advance.x != 0) slot->advance.x += stroke;
  }
}

Glyph FontFace::Draw(FT_UInt index) const {
  if (FT_Load_Glyph(face.get(), index, FT_LOAD_TARGET_MONO | FT_LOAD_NO_BITMAP) != 0) return {};
  if (face->glyph->format != FT_GLYPH_FORMAT_OUTLINE) return {};
  Emphasise();
  if (FT_Render_Glyph(face->glyph, FT_RENDER_MODE_MONO) != 0) return {};
  return GlyphOf(face->glyph);
}

}  // namespace orb
