// The manual page of the program, in the macros of man(7).
#pragma once

#include <string>

#include <hosts/orbimg/command_tree.h>

namespace orb::host {

std::string MakeManualPage(CommandNode const& program, std::string const& version);

}  // namespace orb::host
