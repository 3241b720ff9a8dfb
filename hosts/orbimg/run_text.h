// What the library's texts say of an operator that works in many runs: which plane it is at, and which iteration; and
// what its message boxes say.
#pragma once

#include <optional>
#include <string>

namespace orb::host {

struct RunText {
  int plane = 0;      // counted from 1; 0: there is only one
  int iteration = 0;  // counted from 1; 0: it is being prepared
  // "preparing", "plane 2, iteration 3".
  std::string English() const;
};

// Nothing where the text is of an operator that works in one run.
std::optional<RunText> ReadRunText(std::string const& text);

// The text of a box in English, in one line; a text that is not known stays. Under a Japanese locale all stay.
std::string BoxText(std::string const& text);

}  // namespace orb::host
