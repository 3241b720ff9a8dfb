#include <hosts/orbimg/command_tree.h>

#include <algorithm>
#include <sstream>

#include <hosts/orbimg/command.h>

namespace orb::host {
namespace {

// The words of "NAME:{one,two}"; empty where there is no such list.
std::vector<std::string> ChoicesOf(std::string const& type) {
  std::vector<std::string> choices;
  std::size_t const open = type.find('{');
  std::size_t const close = type.find('}', open);
  if (open == std::string::npos || close == std::string::npos) return choices;
  std::size_t begin = open + 1;
  while (begin < close) {
    std::size_t const end = std::min(type.find(',', begin), close);
    choices.push_back(type.substr(begin, end - begin));
    begin = end + 1;
  }
  return choices;
}

std::vector<std::string> NamesOf(CLI::Option const& option) {
  if (option.get_positional()) return {option.get_name(true)};
  std::vector<std::string> names;
  for (std::string const& name : option.get_snames()) names.push_back("-" + name);
  for (std::string const& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

OptionNode Describe(CLI::Option const& option) {
  OptionNode node;
  node.names = NamesOf(option);
  node.isPositional = option.get_positional();
  node.isRequired = option.get_required();
  node.help = option.get_description();
  int const most = option.get_items_expected_max();
  if (most == 0) return node;  // a flag
  std::string const type = option.get_type_name();
  node.value = type.substr(0, type.find(':'));
  node.choices = ChoicesOf(type);
  node.values = most > 16 ? 1 : most;
  return node;
}

CommandNode Describe(CLI::App const& app, std::string const& above) {
  CommandNode node;
  node.name = app.get_name();
  node.path = above.empty() ? node.name : above + " " + node.name;
  node.help = app.get_description();
  node.example = app.get_footer();
  for (CLI::Option const* option : app.get_options()) node.options.push_back(Describe(*option));
  for (CLI::App const* each : app.get_subcommands([](CLI::App const*) { return true; })) {
    if (each->get_name().empty()) {  // a group of options, which are the command's own
      for (CLI::Option const* option : each->get_options()) node.options.push_back(Describe(*option));
    } else {
      node.subcommands.push_back(Describe(*each, node.path));
    }
  }
  return node;
}

}  // namespace

CommandNode DescribeCommand(CLI::App const& app) { return Describe(app, {}); }

CommandNode DescribeProgram() {
  std::ostringstream nowhere;
  CommandContext context{nowhere, nowhere, {}};
  CLI::App app("", "orbimg");
  AddSubcommands(app, context);
  return DescribeCommand(app);
}

CommandNode const* FindCommand(CommandNode const& program, std::vector<std::string> const& words) {
  CommandNode const* command = &program;
  for (std::string const& word : words) {
    if (command->subcommands.empty()) break;
    auto const next = std::find_if(command->subcommands.begin(), command->subcommands.end(),
                                   [&word](CommandNode const& each) { return each.name == word; });
    if (next == command->subcommands.end()) return nullptr;
    command = &*next;
  }
  return command->subcommands.empty() ? command : nullptr;
}

bool HasOption(CommandNode const& command, std::string const& name) {
  return std::any_of(command.options.begin(), command.options.end(), [&name](OptionNode const& option) {
    return std::find(option.names.begin(), option.names.end(), name) != option.names.end();
  });
}

}  // namespace orb::host
