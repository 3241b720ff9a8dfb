// A rectangle on the command line: left top right bottom, the last two one past the end.
#pragma once

#include <optional>
#include <vector>

#include <orbimg/orbimg.h>

namespace orb::host {

// Nothing where none was given. HostError where it is no part of the image.
std::optional<CRect> MakeRect(std::vector<int> const& sides, COrbImage const& image);

}  // namespace orb::host
