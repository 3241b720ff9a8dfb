// orbimg calibrate: darks and flats.
#include <memory>

#include <hosts/orbimg/calibration_job.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/frame_set.h>

namespace orb::host {
namespace {

struct CalibrateOptions {
  CalibrationJob job;
  CommonOptions common;
};

void RunCalibrate(CalibrateOptions const& options, CommandContext& context) {
  CalibrationJob job = options.job;
  for (auto* files : {&job.lights, &job.darks, &job.flats, &job.flatDarks}) {
    *files = ExpandFiles(*files, FileOrder::kNatural);
  }
  if (job.darks.empty() && job.flats.empty() && !job.skyFlat) {
    throw HostError(Exit::kUsage, "calibrate: nothing to calibrate with; give --dark, --flat or --sky-flat");
  }
  Environment environment(context.out, context.err, options.common);
  for (auto* files : {&job.lights, &job.darks, &job.flats, &job.flatDarks}) {
    *files = LeaveOutBroken(*files, 1, {}, environment);
  }
  CalibrateToFolder(job, environment);
}

}  // namespace

void AddCalibrateCommand(CLI::App& app, CommandContext& context) {
  auto options = std::make_shared<CalibrateOptions>();
  CLI::App* command = app.add_subcommand("calibrate", "Calibrate lights with darks and flats");
  command->footer("Example: orbimg calibrate lights/*.fits --dark darks/*.fits --flat flats/*.fits -o calibrated");
  CalibrationJob& job = options->job;
  command->add_option("lights", job.lights, "Files of the lights")->required();
  command->add_option("--dark", job.darks, "One dark, or many, of which the pixel median is taken");
  CLI::Option* flat =
      command->add_option("--flat", job.flats, "One flat, or many: brought to one brightness, then their pixel median");
  command->add_option("--flat-dark", job.flatDarks, "Darks of the flats, taken from each flat first")->needs(flat);
  command
      ->add_flag("--sky-flat", job.skyFlat,
                 "Make the flat of the lights: less the dark, their pixel median as they lie")
      ->excludes(flat);
  command->add_option("-o,--output", job.folder, "Folder for the calibrated frames")->required();
  command->add_option("--save-dark", job.saveDark, "Keep the combined dark in this file");
  command->add_option("--save-flat", job.saveFlat, "Keep the combined flat in this file");
  AddCommonOptions(*command, options->common, {.writes = true, .runsParallel = true, .usesBands = true});
  command->callback([options, &context] { context.run = [options, &context] { RunCalibrate(*options, context); }; });
}

}  // namespace orb::host
