// The command: subcommands, their arguments, and what comes back to the shell.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include <hosts/io/host_error.h>
#include <CLI/CLI.hpp>

namespace orb::host {

// Runs the program with its arguments (without the program's name). Results go to `out`; errors, one line each,
// warnings and progress to `err`. Throws nothing.
Exit RunCommand(std::vector<std::string> const& arguments, std::ostream& out, std::ostream& err);

// Empty where the program takes these arguments, otherwise its complaint. Nothing is run and no file is looked at.
std::string CheckArguments(std::vector<std::string> const& arguments);

// What a subcommand gets when it registers itself: it sets `run` when it was chosen.
struct CommandContext {
  std::ostream& out;
  std::ostream& err;
  std::function<void()> run;
};

void AddInfoCommand(CLI::App& app, CommandContext& context);
void AddCalibrateCommand(CLI::App& app, CommandContext& context);
void AddStarsCommand(CLI::App& app, CommandContext& context);
void AddAlignCommand(CLI::App& app, CommandContext& context);
void AddStackCommand(CLI::App& app, CommandContext& context);
void AddLevelCommand(CLI::App& app, CommandContext& context);
void AddRenderCommand(CLI::App& app, CommandContext& context);
void AddConvertCommand(CLI::App& app, CommandContext& context);
void AddPlotCommand(CLI::App& app, CommandContext& context);
void AddOperatorCommands(CLI::App& app, CommandContext& context);  // one for each group of the catalogue
void AddComposeCommand(CLI::App& app, CommandContext& context);
void AddMosaicCommand(CLI::App& app, CommandContext& context);
void AddSplitCommand(CLI::App& app, CommandContext& context);
void AddAnnotateCommand(CLI::App& app, CommandContext& context);
void AddSimulateCommand(CLI::App& app, CommandContext& context);
void AddDemoCommand(CLI::App& app, CommandContext& context);
void AddRunCommand(CLI::App& app, CommandContext& context);
void AddManualCommand(CLI::App& app, CommandContext& context);
void AddSubcommands(CLI::App& app, CommandContext& context);  // all of them

}  // namespace orb::host
