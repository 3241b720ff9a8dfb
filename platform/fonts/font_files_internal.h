// The font files that Fontconfig finds for a wish.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include <fontconfig/fontconfig.h>
#include <platform/logfont.h>

namespace orb {

struct FontFile {
  std::string path;
  int index = 0;  // of the face within the file
  bool isBold = false;
  bool isSlanted = false;
};

struct PatternDeleter {
  void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
using PatternPtr = std::unique_ptr<FcPattern, PatternDeleter>;

struct FontSetDeleter {
  void operator()(FcFontSet* set) const { FcFontSetDestroy(set); }
};
using FontSetPtr = std::unique_ptr<FcFontSet, FontSetDeleter>;

// Weights from here on count as bold.
inline constexpr int kBoldWeight = 600;

// Fontconfig's own choice for a font record; null if it has none.
PatternPtr MatchFont(LOGFONT const& font);

// The nearest font with outlines; none if none is installed.
std::optional<FontFile> FindFont(LOGFONT const& font);

// Further fonts, the nearest first, for characters that the first one lacks. Looked up when first asked.
class FallbackFonts {
 public:
  explicit FallbackFonts(LOGFONT const& initFont) : font(initFont) {}

  std::optional<FontFile> FindFor(char32_t character);

 private:
  LOGFONT font;
  PatternPtr pattern;
  FontSetPtr fonts;
};

}  // namespace orb
