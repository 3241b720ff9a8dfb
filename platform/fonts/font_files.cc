#include <algorithm>
#include <new>
#include <utility>

#include <platform/fonts/font_files_internal.h>

namespace orb {
namespace {

constexpr int kRegularWeight = 400;
constexpr int kHeaviestWeight = 1000;

FcChar8 const* AsFcString(char const* text) { return reinterpret_cast<FcChar8 const*>(text); }

// What is asked of Fontconfig for a font record: outlines only, of this family, weight and slant.
PatternPtr MakePattern(LOGFONT const& font) {
  PatternPtr pattern(FcPatternCreate());
  if (!pattern) throw std::bad_alloc();
  if (!font.lfFaceName.empty()) FcPatternAddString(pattern.get(), FC_FAMILY, AsFcString(font.lfFaceName.c_str()));
  int const weight = font.lfWeight <= 0 ? kRegularWeight : std::min(font.lfWeight, kHeaviestWeight);
  FcPatternAddDouble(pattern.get(), FC_WEIGHT, FcWeightFromOpenTypeDouble(weight));
  FcPatternAddInteger(pattern.get(), FC_SLANT, font.lfItalic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
  FcPatternAddBool(pattern.get(), FC_SCALABLE, FcTrue);
  FcPatternAddBool(pattern.get(), FC_OUTLINE, FcTrue);
  FcPatternAddBool(pattern.get(), FC_COLOR, FcFalse);
  FcPatternAddBool(pattern.get(), FC_VARIABLE, FcFalse);
  return pattern;
}

PatternPtr Substituted(PatternPtr pattern) {
  if (!FcConfigSubstitute(nullptr, pattern.get(), FcMatchPattern)) throw std::bad_alloc();
  FcDefaultSubstitute(pattern.get());
  return pattern;
}

std::optional<FontFile> FileOf(FcPattern const* pattern) {
  FcChar8* path = nullptr;
  FcBool isOutline = FcFalse;
  if (FcPatternGetString(pattern, FC_FILE, 0, &path) != FcResultMatch) return std::nullopt;
  if (FcPatternGetBool(pattern, FC_OUTLINE, 0, &isOutline) != FcResultMatch || !isOutline) return std::nullopt;
  FontFile file;
  file.path = reinterpret_cast<char const*>(path);
  int slant = FC_SLANT_ROMAN;
  double weight = FC_WEIGHT_REGULAR;
  FcPatternGetInteger(pattern, FC_INDEX, 0, &file.index);
  FcPatternGetInteger(pattern, FC_SLANT, 0, &slant);
  FcPatternGetDouble(pattern, FC_WEIGHT, 0, &weight);
  file.isSlanted = slant != FC_SLANT_ROMAN;
  file.isBold = FcWeightToOpenTypeDouble(weight) >= kBoldWeight;
  return file;
}

bool HasCharacter(FcPattern const* pattern, char32_t character) {
  FcCharSet* characters = nullptr;
  return FcPatternGetCharSet(pattern, FC_CHARSET, 0, &characters) == FcResultMatch &&
         FcCharSetHasChar(characters, character);
}

}  // namespace

PatternPtr MatchFont(LOGFONT const& font) {
  PatternPtr const pattern = Substituted(MakePattern(font));
  FcResult result = FcResultMatch;
  return PatternPtr(FcFontMatch(nullptr, pattern.get(), &result));
}

std::optional<FontFile> FindFont(LOGFONT const& font) {
  PatternPtr const match = MatchFont(font);
  std::optional<FontFile> const file = match ? FileOf(match.get()) : std::nullopt;
  if (file || font.lfFaceName.empty()) return file;
  LOGFONT any = font;  // a family without outlines was named
  any.lfFaceName.clear();
  return FindFont(any);
}

std::optional<FontFile> FallbackFonts::FindFor(char32_t character) {
  if (!pattern) {
    pattern = MakePattern(font);
    // The ideographs of several scripts share their numbers: this library speaks Japanese.
    FcPatternAddString(pattern.get(), FC_LANG, AsFcString("ja"));
    pattern = Substituted(std::move(pattern));
    FcResult result = FcResultMatch;
    fonts.reset(FcFontSort(nullptr, pattern.get(), FcTrue, nullptr, &result));
  }
  for (int i = 0; fonts && i < fonts->nfont; ++i) {
    if (!HasCharacter(fonts->fonts[i], character)) continue;
    if (std::optional<FontFile> file = FileOf(fonts->fonts[i])) return file;
  }
  return std::nullopt;
}

}  // namespace orb
