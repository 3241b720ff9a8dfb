// The header of an image that is made of several.
#pragma once

#include <string>
#include <vector>

#include <hosts/io/fits_header.h>

namespace orb::host {

// The cards of the first header. Cards that tell of one exposure alone (filter, exposure time, when it was taken) stay
// only where all headers have the same.
FitsHeader JoinHeaders(std::vector<FitsHeader const*> const& headers);

}  // namespace orb::host
