// UTF-8 into characters.
#pragma once

#include <string>

namespace orb {

// A byte that belongs to no valid character becomes one U+FFFD.
std::u32string DecodeUtf8(std::string const& text);

}  // namespace orb
