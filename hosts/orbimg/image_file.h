// Images from files of any kind that can be read: FITS, and PNG by its ending.
#pragma once

#include <string>

#include <hosts/io/fits_file.h>
#include <hosts/orbimg/environment.h>

namespace orb::host {

bool IsPngFile(std::string const& path);

// A PNG has an empty header. Returns the name of the sample type.
std::string ReadImage(std::string const& path, Frame& frame);

// The same for an image that an operator works on: a warning tells of samples that are not finite.
void ReadForWork(std::string const& path, Frame& frame, Environment& environment);

}  // namespace orb::host
