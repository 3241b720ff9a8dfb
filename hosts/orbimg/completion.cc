#include <hosts/orbimg/completion.h>

#include <fmt/format.h>

namespace orb::host {
namespace {

std::string Join(std::vector<std::string> const& words, std::string const& between) {
  std::string text;
  for (std::string const& word : words) text += (text.empty() ? "" : between) + word;
  return text;
}

std::vector<std::string> OptionWords(CommandNode const& command) {
  std::vector<std::string> words;
  for (OptionNode const& option : command.options) {
    if (!option.isPositional) words.insert(words.end(), option.names.begin(), option.names.end());
  }
  return words;
}

std::vector<std::string> SubcommandWords(CommandNode const& command) {
  std::vector<std::string> words;
  for (CommandNode const& each : command.subcommands) words.push_back(each.name);
  return words;
}

// A case of what may follow an option: "path option) its words".
std::string BashValueCase(CommandNode const& command, OptionNode const& option) {
  std::vector<std::string> patterns;
  for (std::string const& name : option.names) patterns.push_back(fmt::format("\"{} {}\"", command.path, name));
  std::string const words =
      option.choices.empty() ? "values=files" : fmt::format("values='{}'", Join(option.choices, " "));
  return fmt::format("    {}) {} ;;\n", Join(patterns, "|"), words);
}

std::string BashValueCases(CommandNode const& program) {
  std::string text;
  EachCommand(program, [&text](CommandNode const& command) {
    for (OptionNode const& option : command.options) {
      if (!option.isPositional && !option.value.empty()) text += BashValueCase(command, option);
    }
  });
  return text;
}

std::string BashWordCases(CommandNode const& program) {
  std::string text;
  EachCommand(program, [&text](CommandNode const& command) {
    text += fmt::format("    \"{}\") subcommands='{}' options='{}' ;;\n", command.path,
                        Join(SubcommandWords(command), " "), Join(OptionWords(command), " "));
  });
  return text;
}

// Quoted for Zsh: one line, without what its option specifications end at.
std::string ZshText(std::string const& help) {
  std::string text = help.substr(0, help.find('\n'));
  std::string result;
  for (char const c : text) {
    if (c == '[' || c == ']' || c == ':' || c == '\\') result += '\\';
    result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return result;
}

std::string ZshFunctionName(CommandNode const& command) {
  std::string name = "_" + command.path;
  for (char& c : name) c = c == ' ' || c == '-' ? '_' : c;
  return name;
}

// "_files", or the words of a choice.
std::string ZshAction(OptionNode const& option) {
  return option.choices.empty() ? "_files" : fmt::format("({})", Join(option.choices, " "));
}

std::string ZshOption(OptionNode const& option) {
  std::string lines;
  for (std::string const& name : option.names) {
    std::string values;
    for (int i = 0; i < option.values; ++i) values += fmt::format(":{}:{}", option.value, ZshAction(option));
    lines += fmt::format("    '{}[{}]{}' \\\n", name, ZshText(option.help), values);
  }
  return lines;
}

std::string ZshLeaf(CommandNode const& command) {
  std::string text = ZshFunctionName(command) + "() {\n  _arguments \\\n";
  for (OptionNode const& option : command.options) {
    if (!option.isPositional) text += ZshOption(option);
  }
  return text + "    '*:file:_files'\n}\n\n";
}

std::string ZshBranch(CommandNode const& command) {
  std::string text = ZshFunctionName(command) + "() {\n  local -a names=(\n";
  for (CommandNode const& each : command.subcommands) {
    text += fmt::format("    '{}:{}'\n", each.name, ZshText(each.help));
  }
  text += "  )\n  if (( CURRENT == 2 )); then\n    _describe subcommand names\n    return\n  fi\n";
  text += "  shift words\n  (( CURRENT-- ))\n  case $words[1] in\n";
  for (CommandNode const& each : command.subcommands) {
    text += fmt::format("    {}) {} ;;\n", each.name, ZshFunctionName(each));
  }
  return text + "  esac\n}\n\n";
}

}  // namespace

// Walks the words before the cursor down the subcommands, and offers what the one it ends at takes.
std::string MakeBashCompletion(CommandNode const& program) {
  std::string const head =
      "# Completion of orbimg for Bash.\n"
      "_orbimg_words() {\n  case \"$1\" in\n" +
      BashWordCases(program) +
      "    *) return 1 ;;\n  esac\n}\n\n"
      "_orbimg_values() {\n  case \"$1 $2\" in\n" +
      BashValueCases(program) + "    *) return 1 ;;\n  esac\n}\n\n";
  return head + R"sh(_orbimg() {
  local current=${COMP_WORDS[COMP_CWORD]} path=orbimg subcommands= options= values= i
  for ((i = 1; i < COMP_CWORD; ++i)); do
    _orbimg_words "$path ${COMP_WORDS[i]}" || break
    path+=" ${COMP_WORDS[i]}"
  done
  _orbimg_words "$path"
  COMPREPLY=()
  if _orbimg_values "$path" "${COMP_WORDS[COMP_CWORD - 1]}"; then
    if [ "$values" != files ]; then COMPREPLY=($(compgen -W "$values" -- "$current")); fi
  elif [ "${current:0:1}" = - ]; then
    COMPREPLY=($(compgen -W "$options" -- "$current"))
  elif [ -n "$subcommands" ]; then
    COMPREPLY=($(compgen -W "$subcommands" -- "$current"))
  fi
}
complete -o default -F _orbimg orbimg
)sh";
}

std::string MakeZshCompletion(CommandNode const& program) {
  std::string text = "#compdef orbimg\n# Completion of orbimg for Zsh.\n\n";
  EachCommand(program, [&text](CommandNode const& command) {
    text += command.subcommands.empty() ? ZshLeaf(command) : ZshBranch(command);
  });
  return text + "_orbimg \"$@\"\n";
}

}  // namespace orb::host
