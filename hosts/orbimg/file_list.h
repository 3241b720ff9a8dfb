// Lists of files on the command line.
#pragma once

#include <string>
#include <vector>

namespace orb::host {

enum class FileOrder {
  kNatural,  // frame2 before frame10
  kAsGiven,  // for work that depends on the order; what one pattern names is in natural order
};

// Patterns with *, ? or [ are expanded, other names stay. A pattern that names nothing is a HostError.
std::vector<std::string> ExpandFiles(std::vector<std::string> const& names, FileOrder order);

// The name without its folder.
std::string BareName(std::string const& path);

// The name without its folder and without the ending of a format that is read: .fits, .fit, .fts and a following .gz
// or .fz, .tif, .tiff, .png, .bmp, and those of camera raw.
std::string StemOf(std::string const& path);

// The ending in lower case with its point, for example ".png"; empty without one.
std::string EndingOf(std::string const& path);

}  // namespace orb::host
