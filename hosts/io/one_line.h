// Texts of libraries and files as part of one line of ours.
#pragma once

#include <algorithm>
#include <string>

namespace orb::host {

inline std::string OneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }, ' ');
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text;
}

}  // namespace orb::host
