// orbimg simulate: raw frames of a field of which everything is known.
#include <cmath>
#include <memory>

#include <fmt/format.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/simulation_files.h>

namespace orb::host {
namespace {

constexpr double kMostRotation = 45.0;  // degrees over all frames

struct SimulateOptions {
  SimulationJob job;
  int trailLight = 6;
  CommonOptions common;
};

void RunSimulate(SimulateOptions const& options, CommandContext& context) {
  SimulationJob job = options.job;
  if (std::abs(job.settings.rotation) * job.settings.frames > kMostRotation) {
    throw HostError(Exit::kUsage,
                    fmt::format("--rotation: {} degrees a frame turn {} frames by more than {} degrees; give less",
                                job.settings.rotation, job.settings.frames, kMostRotation));
  }
  job.settings.trailFrame = options.trailLight - 1;
  Environment environment(context.out, context.err, options.common);
  SimulateToFolder(job, environment);
}

}  // namespace

void AddSimulateCommand(CLI::App& app, CommandContext& context) {
  auto options = std::make_shared<SimulateOptions>();
  SimulationSettings& settings = options->job.settings;
  CLI::App* command = app.add_subcommand("simulate", "Simulate raw lights, darks and flats, with the truth about them");
  command->footer("Example: orbimg simulate -o raw --frames 12");
  command->add_option("-o,--output", options->job.folder, "Folder for the frames and truth.json")->required();
  command->add_option("--frames", settings.frames, "Lights (default: 12)")->check(CLI::Range(1, 999));
  command->add_option("--darks", options->job.darks, "Darks (default: 8)")->check(CLI::Range(0, 999));
  command->add_option("--flats", options->job.flats, "Flats, and as many flat darks (default: 8)")
      ->check(CLI::Range(0, 999));
  command->add_option("--width", settings.width, "Pixels (default: 1024)")->check(CLI::Range(64, 20000));
  command->add_option("--height", settings.height, "Pixels (default: 768)")->check(CLI::Range(64, 20000));
  command->add_option("--stars", settings.stars, "Stars around and in the field (default: 400)")
      ->check(CLI::Range(0, 100000));
  command->add_option("--rotation", settings.rotation, "Degrees a frame (default: 0.03)")
      ->check(NumberBetween(-45.0, 45.0));
  command->add_option("--trail", options->trailLight, "The light that a satellite crosses, 0 for none (default: 6)")
      ->check(CLI::Range(0, 999));
  command->add_option("--seed", settings.seed, "The same seed gives the same frames (default: 1)");
  AddCommonOptions(*command, options->common,
                   {.writes = true, .runsParallel = true, .usesBands = false, .readsFrames = false});
  command->callback([options, &context] { context.run = [options, &context] { RunSimulate(*options, context); }; });
}

}  // namespace orb::host
