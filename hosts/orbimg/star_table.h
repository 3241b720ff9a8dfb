// Tables of stars as `orbimg stars` prints them.
#pragma once

#include <string>
#include <vector>

#include <hosts/orbimg/star_finder.h>

namespace orb::host {

// The stars of an image: of the table's only frame, or of the one whose file has the image's bare name. HostError where
// the file cannot be read, is no such table, or has several frames and none of that name.
std::vector<Star> ReadStarTable(std::string const& path, std::string const& image);

// Places of stars from a text: on every line x and y, parted by blanks, a comma, a semicolon or a tabulator, and
// whatever follows. A line that begins with # and a first line of titles are passed over. Peak and flux stay 0.
// HostError where another line has no two numbers, or no line has.
std::vector<Star> ReadStarText(std::string const& path);

}  // namespace orb::host
