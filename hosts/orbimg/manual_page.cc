#include <hosts/orbimg/manual_page.h>

#include <fmt/format.h>
#include <hosts/io/host_error.h>

namespace orb::host {
namespace {

// Backslashes, dashes, and what a macro would be read from at the start of a line.
std::string Escape(std::string const& text) {
  std::string result;
  bool isLineStart = true;
  for (char const c : text) {
    if (isLineStart && (c == '.' || c == '\'')) result += "\\&";
    if (c == '\\') {
      result += "\\e";
    } else if (c == '-') {
      result += "\\-";
    } else {
      result += c;
    }
    isLineStart = c == '\n';
  }
  return result;
}

std::string Bold(std::string const& text) { return "\\fB" + Escape(text) + "\\fR"; }

// Help of several lines keeps them.
std::string Paragraph(std::string const& help) {
  std::string result;
  std::size_t begin = 0;
  while (begin <= help.size()) {
    std::size_t const end = std::min(help.find('\n', begin), help.size());
    std::size_t const text = std::min(help.find_first_not_of(' ', begin), end);
    if (begin > 0) result += ".br\n";
    result += Escape(help.substr(text, end - text)) + "\n";
    begin = end + 1;
  }
  return result;
}

std::string OptionText(OptionNode const& option) {
  std::string names;
  for (std::string const& name : option.names) names += (names.empty() ? "" : ", ") + Bold(name);
  std::string value = option.value.empty() || option.isPositional ? "" : " \\fI" + Escape(option.value) + "\\fR";
  if (option.values > 1) value += fmt::format(" x {}", option.values);
  std::string choices;
  for (std::string const& choice : option.choices) choices += (choices.empty() ? "One of " : ", ") + Bold(choice);
  if (!choices.empty()) choices = ".br\n" + choices + ".\n";
  return fmt::format(".TP\n{}{}{}\n{}{}", names, value, option.isRequired ? " (required)" : "", Paragraph(option.help),
                     choices);
}

std::string CommandSection(CommandNode const& command) {
  std::string text = fmt::format(".SS {}\n{}.\n", Escape(command.path), Escape(command.help));
  for (OptionNode const& option : command.options) text += OptionText(option);
  if (!command.example.empty()) text += ".PP\n.nf\n" + Escape(command.example) + "\n.fi\n";
  return text;
}

std::string ExitStatus() {
  struct Meaning {
    Exit status;
    char const* text;
  };
  constexpr Meaning kMeanings[] = {
      {Exit::kDone, "Done."},
      {Exit::kFailed, "Failed for a reason that the line on standard error names."},
      {Exit::kUsage, "Wrong use: an unknown option, a value out of its range."},
      {Exit::kInput, "An input cannot be read."},
      {Exit::kOutput, "An output cannot be written, or exists and \\fB\\-\\-force\\fR was not given."},
      {Exit::kResources, "Not enough memory or disk."},
      {Exit::kInterrupted, "Interrupted by Ctrl\\-C or ESC; outputs are as they were."},
  };
  std::string text = ".SH EXIT STATUS\n";
  for (Meaning const& each : kMeanings) text += fmt::format(".TP\n{}\n{}\n", static_cast<int>(each.status), each.text);
  return text;
}

}  // namespace

std::string MakeManualPage(CommandNode const& program, std::string const& version) {
  std::string text = fmt::format(
      ".TH ORBIMG 1 \"\" \"orbimg {}\" \"User Commands\"\n.SH NAME\norbimg \\- image operators for astronomical "
      "photographs\n.SH SYNOPSIS\n.B orbimg\n\\fISUBCOMMAND\\fR [\\fIOPTIONS\\fR] \\fIFILES\\fR\n.SH DESCRIPTION\n{}.\n"
      "Positions are in pixels, the first one in the upper left corner being 0 0. Outputs are written beside their "
      "place "
      "and renamed; a file that exists stays without \\fB\\-\\-force\\fR.\n.SH SUBCOMMANDS\n",
      Escape(version), Escape(program.help));
  EachCommand(program, [&text](CommandNode const& command) { text += CommandSection(command); });
  return text + ExitStatus();
}

}  // namespace orb::host
