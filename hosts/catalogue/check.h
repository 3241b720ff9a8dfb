// The checks before a call: whatever passes them is within the contract of the operator.
#pragma once

#include <string>

#include <hosts/catalogue/operator_entry.h>

namespace orb::host {

// An empty text if the call is sound, or one line that names what is wrong and what would be right.
std::string CheckInvocation(OperatorEntry const& entry, Invocation const& call);

// One value against its parameter.
std::string CheckValue(Parameter const& parameter, double value);

// Whether the mean of an image has a value; `role` is what the text calls the image.
std::string CheckMean(std::string const& role, COrbImage const& image);

}  // namespace orb::host
