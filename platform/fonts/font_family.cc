#include <algorithm>
#include <iterator>
#include <new>

#include <platform/fonts/font_files_internal.h>
#include <platform/text_rasterizer.h>

namespace orb {
namespace {

struct ObjectSetDeleter {
  void operator()(FcObjectSet* set) const { FcObjectSetDestroy(set); }
};
using ObjectSetPtr = std::unique_ptr<FcObjectSet, ObjectSetDeleter>;

// Names that stand for a family of the system's choice.
constexpr char const* kGenericNames[] = {"", "sans-serif", "serif", "monospace"};

bool IsGeneric(std::string const& name) {
  return std::any_of(std::begin(kGenericNames), std::end(kGenericNames), [&](char const* g) { return name == g; });
}

std::string FamilyOf(FcPattern const* pattern) {
  FcChar8* family = nullptr;
  if (FcPatternGetString(pattern, FC_FAMILY, 0, &family) != FcResultMatch) return {};
  return reinterpret_cast<char const*>(family);
}

std::string FindGenericFamily(std::string const& name) {
  LOGFONT font;
  font.lfFaceName = name;
  PatternPtr const match = MatchFont(font);
  return match ? FamilyOf(match.get()) : std::string();
}

}  // namespace

std::string FindFontFamily(std::string const& name) {
  if (IsGeneric(name)) return FindGenericFamily(name);
  PatternPtr const pattern(FcPatternCreate());
  ObjectSetPtr const wanted(FcObjectSetBuild(FC_FAMILY, static_cast<char const*>(nullptr)));
  if (!pattern || !wanted) throw std::bad_alloc();
  FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<FcChar8 const*>(name.c_str()));
  FcPatternAddBool(pattern.get(), FC_OUTLINE, FcTrue);
  FontSetPtr const fonts(FcFontList(nullptr, pattern.get(), wanted.get()));
  return fonts && fonts->nfont > 0 ? FamilyOf(fonts->fonts[0]) : std::string();
}

}  // namespace orb
