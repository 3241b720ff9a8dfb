// The subcommands and options of the program as data, out of which the manual page and the completions are made, so
// that they cannot differ from what the program takes.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace orb::host {

struct OptionNode {
  std::vector<std::string> names;    // "-o", "--output"; of an argument without dashes its name alone
  std::vector<std::string> choices;  // where it takes one of several words
  std::string value;                 // what it takes: "TEXT", "INT"; empty for a flag
  std::string help;
  int values = 0;  // how many it takes; those without an end count as 1
  bool isPositional = false;
  bool isRequired = false;
};

struct CommandNode {
  std::string name;
  std::string path;  // "orbimg filter gaussian"
  std::string help;
  std::string example;
  std::vector<OptionNode> options;
  std::vector<CommandNode> subcommands;
};

CommandNode DescribeCommand(CLI::App const& app);
CommandNode DescribeProgram();

// The command that the first words of a call name; null if they name none.
CommandNode const* FindCommand(CommandNode const& program, std::vector<std::string> const& words);
bool HasOption(CommandNode const& command, std::string const& name);

// Calls visit(command) for a command and all below it, in the order in which they were made.
template <typename Visit>
void EachCommand(CommandNode const& command, Visit const& visit) {
  visit(command);
  for (CommandNode const& each : command.subcommands) EachCommand(each, visit);
}

}  // namespace orb::host
