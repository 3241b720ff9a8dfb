#include <hosts/orbimg/command.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <new>
#include <ostream>
#include <sstream>

#include <fmt/format.h>

namespace orb::host {
namespace {

constexpr char kDescription[] = "Calibrates, aligns, stacks, levels and renders astronomical photographs";

std::string OneLine(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

// "orbimg apply invert": the command and what was chosen of it.
std::string ChosenName(CLI::App const& app) {
  auto const chosen = app.get_subcommands();
  return chosen.empty() ? app.get_name() : app.get_name() + " " + ChosenName(*chosen.front());
}

// A complaint about a word that stands where a subcommand must, and is none; else empty.
std::string FindUnknownSubcommand(CLI::App const& app, std::vector<std::string> const& arguments) {
  CLI::App const* command = &app;
  std::string name;
  for (std::string const& argument : arguments) {
    auto const isNamed = [](CLI::App const* one) { return !one->get_name().empty(); };  // groups of options are not
    bool const isLeaf = command->get_subcommands(isNamed).empty();
    if (isLeaf || argument.starts_with('-')) break;
    auto const isMeant = [&](CLI::App const* one) { return one->check_name(argument); };
    auto const meant = command->get_subcommands(isMeant);
    if (meant.empty()) {
      return fmt::format("orbimg:{} {}: is no subcommand; see orbimg{} --help", name, argument, name);
    }
    name += " " + argument;
    command = meant.front();
  }
  return {};
}

Exit Parse(CLI::App& app, std::vector<std::string> arguments, CommandContext& context) {
  if (std::string const unknown = FindUnknownSubcommand(app, arguments); !unknown.empty()) {
    context.err << unknown << '\n';
    return Exit::kUsage;
  }
  std::reverse(arguments.begin(), arguments.end());
  try {
    app.parse(std::move(arguments));
  } catch (CLI::Success const& asked) {
    app.exit(asked, context.out, context.err);
    return Exit::kDone;
  } catch (CLI::ParseError const& error) {
    std::string const name = ChosenName(app);
    context.err << fmt::format("{}: {}; see {} --help\n", name, OneLine(error.what()), name);
    return Exit::kUsage;
  }
  return Exit::kDone;
}

Exit Fail(CommandContext& context, Exit status, std::string const& line) {
  context.err << "orbimg: " << OneLine(line) << '\n';
  return status;
}

}  // namespace

void AddSubcommands(CLI::App& app, CommandContext& context) {
  AddInfoCommand(app, context);
  AddCalibrateCommand(app, context);
  AddStarsCommand(app, context);
  AddMeasureCommand(app, context);
  AddAlignCommand(app, context);
  AddStackCommand(app, context);
  AddLevelCommand(app, context);
  AddRenderCommand(app, context);
  AddConvertCommand(app, context);
  AddPlotCommand(app, context);
  AddOperatorCommands(app, context);
  AddMapCommand(app, context);
  AddComposeCommand(app, context);
  AddMosaicCommand(app, context);
  AddSplitCommand(app, context);
  AddAnnotateCommand(app, context);
  AddSimulateCommand(app, context);
  AddDemoCommand(app, context);
  AddRunCommand(app, context);
  AddManualCommand(app, context);
}

Exit RunCommand(std::vector<std::string> const& arguments, std::ostream& out, std::ostream& err) {
  CommandContext context{out, err, {}};
  try {
    CLI::App app(kDescription, "orbimg");
    app.require_subcommand(1);
    app.set_version_flag("--version", "orbimg " ORBIMG_VERSION, "Print the version");
    AddSubcommands(app, context);
    if (Exit const parsed = Parse(app, arguments, context); parsed != Exit::kDone) return parsed;
    if (context.run) context.run();
    return out.flush() ? Exit::kDone : Fail(context, Exit::kOutput, "standard output: cannot be written to");
  } catch (HostError const& error) {
    return Fail(context, error.Status(), error.what());
  } catch (std::bad_alloc const&) {
    return Fail(context, Exit::kResources, "not enough memory; close other programs or give a lower --memory");
  } catch (std::filesystem::filesystem_error const& error) {
    return Fail(context, Exit::kFailed, error.what());
  } catch (std::exception const& error) {
    return Fail(context, Exit::kFailed, error.what());
  }
}

std::string CheckArguments(std::vector<std::string> const& arguments) {
  std::ostringstream out;
  std::ostringstream err;
  CommandContext context{out, err, {}};
  CLI::App app(kDescription, "orbimg");
  app.require_subcommand(1);
  AddSubcommands(app, context);
  return Parse(app, arguments, context) == Exit::kDone ? std::string() : OneLine(err.str());
}

}  // namespace orb::host
