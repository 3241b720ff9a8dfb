#include <platform/text_rasterizer.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>

#include <platform/fonts/font_face_internal.h>
#include <platform/fonts/utf8_internal.h>

namespace orb {
namespace {

constexpr char32_t kBlank = U' ';

bool IsControl(char32_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

// Characters that only say how others are to be shaped.
bool IsInvisible(char32_t c) {
  return (c >= 0x200B && c <= 0x200F) || (c >= 0xFE00 && c <= 0xFE0F) || c == 0x2060 || c == 0xFEFF;
}

// The heights of a line, in pixels.
struct Line {
  EmSize em;
  int ascent = 0;
  int height = 0;
};

bool IsTooLarge(double pixels) { return pixels > kMostFontPixels; }

// Height above 0: of the line; below 0: of the letters' square.
std::optional<Line> MeasureLine(FontFace const& face, LOGFONT const& font, int scale) {
  double const ascent = face.Ascent();
  double const descent = face.Descent();
  double const height =
      static_cast<double>(scale) * (font.lfHeight != 0 ? static_cast<double>(font.lfHeight) : -kDefaultLetterHeight);
  double const width = scale * std::abs(static_cast<double>(font.lfWidth));
  if (IsTooLarge(std::abs(height)) || IsTooLarge(width)) return std::nullopt;
  Line line;
  line.em.y = height > 0.0 ? height / (ascent + descent) : -height;
  line.em.x = width > 0.0 ? width / face.MeanWidth() : line.em.y;
  if (IsTooLarge(line.em.x)) return std::nullopt;
  line.ascent = static_cast<int>(std::lround(ascent * line.em.y));
  int const descentRows = static_cast<int>(std::lround(descent * line.em.y));
  line.height = height > 0.0 ? static_cast<int>(height) : std::max(line.ascent + descentRows, 1);
  return line;
}

// Puts glyphs one after the other; draws them when their extent is known.
class Typesetter {
 public:
  explicit Typesetter(Line const& initLine) : line(initLine) {}

  // False when the box has become too large.
  bool Add(Glyph glyph) {
    if (glyph.width > 0) {
      inkBegin = std::min(inkBegin, pen + glyph.left);
      inkEnd = std::max(inkEnd, pen + glyph.left + glyph.width);
    }
    std::int64_t const advance = glyph.advance;
    glyph.left += static_cast<int>(pen);
    glyphs.push_back(std::move(glyph));
    pen += advance;
    return (End() - inkBegin) * line.height <= kMostBoxPixels;
  }

  TextBox Draw() const {
    TextBox box;
    box.width = static_cast<int>(End() - inkBegin);
    box.height = line.height;
    box.letters.resize(static_cast<std::size_t>(box.width) * static_cast<std::size_t>(box.height));
    for (Glyph const& glyph : glyphs) DrawGlyph(glyph, box);
    return box;
  }

 private:
  std::int64_t End() const { return std::max(pen, inkEnd); }

  void DrawGlyph(Glyph const& glyph, TextBox& box) const {
    int const left = glyph.left - static_cast<int>(inkBegin);
    int const top = line.ascent - glyph.top;
    for (int y = std::max(0, -top); y < std::min(glyph.height, box.height - top); ++y) {
      std::uint8_t const* const from = glyph.pixels.data() + static_cast<std::ptrdiff_t>(y) * glyph.width;
      std::uint8_t* const to = box.letters.data() + static_cast<std::ptrdiff_t>(top + y) * box.width + left;
      for (int x = 0; x < glyph.width; ++x) to[x] |= from[x];
    }
  }

  Line line;
  std::vector<Glyph> glyphs;
  std::int64_t pen = 0;
  std::int64_t inkBegin = 0;
  std::int64_t inkEnd = 0;
};

// The first face, and those that were opened for characters it lacks.
class Faces {
 public:
  Faces(FT_Library initLibrary, FontFace const& initFirst, LOGFONT const& font, EmSize initSize, Emphasis initEmphasis)
      : library(initLibrary), first(initFirst), fallbacks(font), size(initSize), emphasis(initEmphasis) {}

  Glyph Draw(char32_t c) {
    if (FT_UInt const index = first.FindGlyph(c); index != 0) return first.Draw(index);
    if (FontFace const* const other = FindOther(c)) return other->Draw(other->FindGlyph(c));
    ++missing;
    return first.Draw(0);
  }

  int Missing() const { return missing; }

 private:
  FontFace const* FindOther(char32_t c) {
    for (FontFace const& face : opened) {
      if (face.FindGlyph(c) != 0) return &face;
    }
    std::optional<FontFile> const file = fallbacks.FindFor(c);
    if (!file) return nullptr;
    FontFace face(library, *file, emphasis);
    if (!face.IsUsable() || !face.SetSize(size) || face.FindGlyph(c) == 0) return nullptr;
    opened.push_back(std::move(face));
    return &opened.back();
  }

  FT_Library library;
  FontFace const& first;
  FallbackFonts fallbacks;
  EmSize size;
  Emphasis emphasis;
  std::vector<FontFace> opened;
  int missing = 0;
};

}  // namespace

bool RasterizeText(LOGFONT const& font, int scale, std::string const& text, TextBox& box) {
  std::optional<FontFile> const file = FindFont(font);
  LibraryPtr const library = MakeLibrary();
  if (!file || !library) return false;
  Emphasis const emphasis{font.lfWeight >= kBoldWeight, font.lfItalic};
  FontFace first(library.get(), *file, emphasis);
  if (!first.IsUsable()) return false;
  std::optional<Line> const line = MeasureLine(first, font, scale);
  if (!line || !first.SetSize(line->em)) return false;

  Faces faces(library.get(), first, font, line->em, emphasis);
  Typesetter typesetter(*line);
  for (char32_t const c : DecodeUtf8(text)) {
    if (IsInvisible(c)) continue;
    if (!typesetter.Add(faces.Draw(IsControl(c) ? kBlank : c))) return false;
  }
  box = typesetter.Draw();
  box.missing = faces.Missing();
  return true;
}

}  // namespace orb
