// The wording of progress texts: the library's own, which are Japanese, under a Japanese locale; English elsewhere.
#pragma once

#include <string>

namespace orb::host {

bool IsJapaneseLocale();

// The text of a step that stands for the library's message `id`; `english` where the locale is not Japanese or the
// library has no such text.
std::string StepText(int id, std::string const& english);

}  // namespace orb::host
