// What every reader asks of a path before it opens the file.
#pragma once

#include <string>

namespace orb::host {

// A HostError where the path is missing, a directory, not a regular file, empty, or may not be read.
void RequireReadableFile(std::string const& path);

}  // namespace orb::host
