// Images from files of any kind that can be read: FITS, and PNG by its ending.
#pragma once

#include <string>

#include <hosts/io/fits_file.h>

namespace orb::host {

bool IsPngFile(std::string const& path);

// A PNG has an empty header. Returns the name of the sample type.
std::string ReadImage(std::string const& path, Frame& frame);

}  // namespace orb::host
