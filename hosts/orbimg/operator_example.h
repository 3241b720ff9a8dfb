// An example of a call of an operator on the command line, for its help.
#pragma once

#include <string>

#include <hosts/catalogue/operator_entry.h>

namespace orb::host {

// "Example: orbimg GROUP NAME ...", with every required option and the first parameter that an image does not settle.
std::string ExampleOf(std::string const& group, OperatorEntry const& entry);

}  // namespace orb::host
