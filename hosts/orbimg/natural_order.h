// The order in which people number files: frame2 before frame10.
#pragma once

#include <string_view>

namespace orb::host {

// Runs of digits compare as numbers, everything else byte by byte; names that differ in leading zeros alone compare as
// plain texts.
bool ComesNaturallyBefore(std::string_view a, std::string_view b);

}  // namespace orb::host
