// Tables of stars as `orbimg stars --json` prints them.
#pragma once

#include <string>
#include <vector>

#include <hosts/orbimg/star_finder.h>

namespace orb::host {

// The stars of an image: of the table's only frame, or of the one whose file has the image's bare name. HostError where
// the file cannot be read, is no such table, or has several frames and none of that name.
std::vector<Star> ReadStarTable(std::string const& path, std::string const& image);

}  // namespace orb::host
