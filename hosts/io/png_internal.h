// PNG by libpng, whose errors jump: what may jump stands in functions of its own, without objects to destroy.
#pragma once

#include <cstdio>

#include <hosts/io/dib_view_internal.h>

namespace orb::host {

// False if libpng or the file failed; errno then tells why, or is 0.
bool WritePng(std::FILE* file, DibView const& dib);

}  // namespace orb::host
