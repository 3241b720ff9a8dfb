// Completions of the program's words for Bash and Zsh.
#pragma once

#include <string>

#include <hosts/orbimg/command_tree.h>

namespace orb::host {

std::string MakeBashCompletion(CommandNode const& program);
std::string MakeZshCompletion(CommandNode const& program);

}  // namespace orb::host
