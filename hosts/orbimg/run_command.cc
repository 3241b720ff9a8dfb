// orbimg run: a recipe, step after step.
#include <chrono>
#include <filesystem>
#include <memory>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/interrupt.h>
#include <hosts/orbimg/logged_stream.h>
#include <hosts/orbimg/output_check.h>
#include <hosts/orbimg/recipe_plan.h>
#include <hosts/orbimg/recipe_record.h>

namespace orb::host {
namespace {

struct RunOptions {
  std::string recipe;
  std::vector<std::string> inputs;  // NAME=PATTERN
  bool dryRun = false;
  RecipeSettings settings;
};

void SetOverrides(std::vector<std::string> const& inputs, RecipeSettings& settings) {
  for (std::string const& input : inputs) {
    std::size_t const equals = input.find('=');
    if (equals == 0 || equals == std::string::npos || equals + 1 == input.size()) {
      throw HostError(Exit::kUsage,
                      fmt::format("--input: {}: must be NAME=FILES, for example darks='dark_*.fits'", input));
    }
    settings.overrides[input.substr(0, equals)].push_back(input.substr(equals + 1));
  }
}

class RecipeRun {
 public:
  RecipeRun(RecipePlan const& initPlan, RecipeSettings const& initSettings, CommandContext& initContext)
      : plan(initPlan), settings(initSettings), context(initContext), record(initSettings.folder) {}

  void Run() {
    std::string log = plan.title + "\n";
    for (PlannedStep const& step : plan.steps) {
      StopIfInterrupted();
      log += RunStep(step);
      WriteTextFile((std::filesystem::path(settings.folder) / "orbimg-run.log").string(), log, Existing::kReplace);
    }
  }

 private:
  std::string RunStep(PlannedStep const& step) {
    std::string const call = fmt::format("orbimg {}\n", fmt::join(step.arguments, " "));
    if (record.IsFinished(step)) {
      context.out << fmt::format("{}: kept, nothing changed\n", step.name);
      return record.Said(step);
    }
    std::filesystem::create_directories(std::filesystem::path(step.output).parent_path());
    context.out << fmt::format("{}: {}", step.name, call) << std::flush;
    LoggedStream out(context.out);
    LoggedStream err(context.err);
    auto const start = std::chrono::steady_clock::now();
    Exit const status = RunCommand(step.arguments, out, err);
    std::chrono::duration<double> const time = std::chrono::steady_clock::now() - start;
    if (status != Exit::kDone) {
      throw HostError(status, fmt::format("step {} failed; what was finished before stays", step.name));
    }
    std::string const said = call + out.Lines() + err.Lines() + fmt::format("{:.2f} s\n", time.count());
    record.Finish(step, said);
    return said;
  }

  RecipePlan const& plan;
  RecipeSettings const& settings;
  CommandContext& context;
  RecipeRecord record;
};

void RunRecipe(RunOptions const& options, CommandContext& context) {
  RecipeSettings settings = options.settings;
  SetOverrides(options.inputs, settings);
  RecipePlan const plan = MakePlan(ReadRecipe(options.recipe), settings);
  if (options.dryRun) {
    context.out << FormatPlan(plan, settings.common.memory);
    for (PlannedStep const& step : plan.steps)
      context.out << fmt::format("orbimg {}\n", fmt::join(step.arguments, " "));
    return;
  }
  MakeOutputFolder(settings.folder);
  CheckFreeSpace(settings.folder, plan.Bytes());
  RecipeRun(plan, settings, context).Run();
}

}  // namespace

void AddRunCommand(CLI::App& app, CommandContext& context) {
  auto options = std::make_shared<RunOptions>();
  CLI::App* command = app.add_subcommand("run", "Run a recipe: a JSON file with inputs, steps and outputs");
  command->footer("Example: orbimg run deep-sky.json --input lights='m51/light_*.fits' -o m51-result --dry-run");
  command->add_option("recipe", options->recipe, "Recipe (.json)")->required();
  command->add_option("-o,--output", options->settings.folder, "Folder for all that the steps write")->required();
  command->add_option("--input", options->inputs, "NAME=FILES: other files for an input of the recipe; repeatable")
      ->type_name("TEXT")
      ->expected(1)
      ->take_all();
  command->add_flag("--dry-run", options->dryRun, "Check everything, print the plan, do nothing");
  CommonOptions& common = options->settings.common;
  AddCommonOptions(*command, common, {.writes = false, .runsParallel = true, .usesBands = true});
  command->callback([options, &context] { context.run = [options, &context] { RunRecipe(*options, context); }; });
}

}  // namespace orb::host
