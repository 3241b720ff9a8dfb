#include <hosts/orbimg/texts.h>

#include <cstdlib>

#include <orbimg/orbimg.h>

namespace orb::host {

bool IsJapaneseLocale() {
  for (char const* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    char const* value = std::getenv(name);
    if (value != nullptr && *value != '\0') return std::string(value).starts_with("ja");
  }
  return false;
}

std::string StepText(int id, std::string const& english) {
  char const* text = LoadString(id);
  return IsJapaneseLocale() && *text != '\0' ? text : english;
}

}  // namespace orb::host
