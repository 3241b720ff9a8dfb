// orbimg stack: many frames into one.
#include <algorithm>
#include <cmath>
#include <memory>

#include <fmt/format.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/frame_set.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/output_check.h>
#include <hosts/orbimg/preview.h>
#include <hosts/orbimg/stack_job.h>

namespace orb::host {
namespace {

constexpr char kNotAligned[] = "none";

struct StackOptions {
  std::vector<std::string> inputs;
  std::string mode = "median";
  double ratio = 0.5;
  bool ratioGiven = false;
  StackParameters parameters;
  std::string scale = "raw";
  std::string normalise = "none";
  std::string weights = "equal";
  bool equalSky = false;
  std::string output;
  std::string preview;
  CommonOptions common;
};

// The reference first, its transform being that of a frame that moves nothing.
std::vector<AlignedFrame> FromAlignment(std::string const& path) {
  AlignmentList list = ReadAlignment(path);
  auto const reference = std::find_if(list.frames.begin(), list.frames.end(),
                                      [&](AlignedFrame const& frame) { return frame.file == list.reference; });
  if (reference == list.frames.end()) {
    throw HostError(Exit::kInput,
                    fmt::format("{}: its reference {} is not among its frames; align again", path, list.reference));
  }
  reference->transform.dx = reference->transform.dy = reference->transform.angle = 0.0;
  std::rotate(list.frames.begin(), reference, reference + 1);
  return list.frames;
}

std::vector<AlignedFrame> CollectFrames(StackOptions const& options, StackMode const& mode) {
  auto const isAlignment = [](std::string const& file) { return EndingOf(file) == ".json"; };
  if (std::any_of(options.inputs.begin(), options.inputs.end(), isAlignment)) {
    if (options.inputs.size() == 1) return FromAlignment(options.inputs.front());
    throw HostError(Exit::kUsage, "stack: an alignment file stands alone; give it or the frames, not both");
  }
  std::vector<AlignedFrame> frames;
  for (std::string const& file :
       ExpandFiles(options.inputs, mode.orderMatters ? FileOrder::kAsGiven : FileOrder::kNatural)) {
    frames.push_back(AlignedFrame{file, {}, kNotAligned, 0, std::nullopt});
  }
  return frames;
}

Normalise NormaliseOf(StackOptions const& options) {
  if (options.equalSky || options.normalise == "sky") return Normalise::kSky;
  return options.normalise == "noise" ? Normalise::kNoise : Normalise::kNone;
}

// What single options cannot say.
void CheckParameters(StackParameters const& parameters, StackOptions const& options) {
  auto const refuse = [](std::string const& line) { throw HostError(Exit::kUsage, line); };
  if (parameters.on256 && parameters.normalise != Normalise::kNone) {
    refuse(fmt::format("{}: works on raw samples; leave out --scale 256",
                       options.equalSky ? "--equal-sky" : "--normalise"));
  }
  if (parameters.on256 && (parameters.IsMedian() || parameters.IsMean())) {
    refuse(fmt::format("--scale: {} works on raw samples; leave out --scale 256", options.mode));
  }
  if (parameters.weighting == Weighting::kEqual) return;
  if (!parameters.IsMean()) {
    refuse(fmt::format("--weights: {} knows no weights; use --mode average, sigma or winsorised", options.mode));
  }
  if (parameters.normalise == Normalise::kNoise) {
    refuse("--weights: are all the same once the noise is made equal; leave out --normalise noise");
  }
}

StackParameters MakeParameters(StackOptions const& options) {
  StackParameters parameters = options.parameters;
  parameters.mode = &FindStackMode(options.mode);
  // Half and half for a weighted mean; for a rejection the frames count as equally bright.
  parameters.ratio = options.ratioGiven || !parameters.IsRejection() ? options.ratio : 1.0;
  parameters.on256 = options.scale == "256";
  parameters.normalise = NormaliseOf(options);
  parameters.weighting = options.weights == "noise" ? Weighting::kNoise : Weighting::kEqual;
  CheckParameters(parameters, options);
  return parameters;
}

// A reference that others were laid over must be there; without an alignment the next frame takes its place.
void DropBroken(std::vector<AlignedFrame>& frames, Environment& environment) {
  bool const isAligned = frames.front().method != kNotAligned;
  std::vector<std::string> files;
  for (AlignedFrame const& frame : frames) files.push_back(frame.file);
  files = LeaveOutBroken(files, 2, isAligned ? files.front() : std::string(), environment);
  std::erase_if(frames, [&](AlignedFrame const& frame) {
    return std::find(files.begin(), files.end(), frame.file) == files.end();
  });
}

void WarnOfFewFrames(StackJob const& job, Environment& environment) {
  StackParameters const& parameters = job.parameters;
  if (parameters.mode->rejection != JoinRule::Rejection::kSigma) return;
  auto const n = static_cast<double>(job.frames.size());
  double const furthest = (n - 1.0) / std::sqrt(n);
  if (std::min(parameters.low, parameters.high) < furthest) return;
  environment.Warn(fmt::format(
      "--mode sigma: of {} frames none lies further off than {:.2f} deviations, so nothing is taken out; use "
      "--mode winsorised, or lower --low and --high",
      job.frames.size(), furthest));
}

void RunStack(StackOptions const& options, CommandContext& context) {
  StackJob job;
  job.parameters = MakeParameters(options);
  job.frames = CollectFrames(options, *job.parameters.mode);
  job.output = options.output;
  if (job.frames.size() < 2) {
    throw HostError(Exit::kUsage, fmt::format("stack: {} frame is no stack; give two or more", job.frames.size()));
  }
  Environment environment(context.out, context.err, options.common);
  CheckImageFile(job.output, environment.existing);
  DropBroken(job.frames, environment);
  if (!options.preview.empty()) CheckPictureFile(options.preview, environment.existing);
  WarnOfFewFrames(job, environment);
  StackToFile(job, environment);
  if (!options.preview.empty()) WritePreview(job.output, options.preview, environment.existing);
}

std::string ModeHelp() {
  std::string help = "How the frames are joined (default: median):";
  for (StackMode const& mode : StackModes()) help += fmt::format("\n  {}: {}", mode.name, mode.help);
  return help;
}

std::vector<std::string> ModeNames() {
  std::vector<std::string> names;
  for (StackMode const& mode : StackModes()) names.emplace_back(mode.name);
  return names;
}

void AddScalingOptions(CLI::App& command, StackOptions& options) {
  auto* const normalise =
      command
          .add_option("--normalise", options.normalise,
                      "What is done to each frame first, raw scale only (default: none):\n"
                      "  sky: add what brings the median of its first plane to that of the first frame\n"
                      "  noise: (v - sky) noise1 / noise + sky1, each plane by its own sky and noise")
          ->check(CLI::IsMember({"none", "sky", "noise"}));
  command.add_flag("--equal-sky", options.equalSky, "The same as --normalise sky")->excludes(normalise);
  command
      .add_option("--weights", options.weights,
                  "average, sigma, winsorised: equal, or noise: 1 / noise^2 of each frame (default: equal)")
      ->check(CLI::IsMember({"equal", "noise"}));
}

void AddModeOptions(CLI::App& command, std::shared_ptr<StackOptions> const& options) {
  StackParameters& parameters = options->parameters;
  command.add_option("--mode", options->mode, ModeHelp())->check(CLI::IsMember(ModeNames()));
  command
      .add_option("--ratio", options->ratio,
                  "weighted: weight of each further frame (default: 0.5); rejection: "
                  "factor on each further frame (default: 1)")
      ->each([options](std::string const&) { options->ratioGiven = true; })
      ->check(NumberBetween(-1e6, 1e6));
  command.add_flag("--clamp", parameters.clamp, "subtract: differences below 0 become 0");
  command
      .add_option("--threshold", parameters.threshold,
                  "rejection: fraction of the brightest sample above which a pixel is bright (default: 0.95)")
      ->check(NumberBetween(0.0, 1.0));
  command.add_option("--radius", parameters.radius, "rejection: half size of the window, 0 to 2 pixels (default: 0)")
      ->check(CLI::Range(0, 2));
  command.add_option("--low", parameters.low, "sigma, winsorised: deviations allowed below (default: 3)")
      ->check(NumberBetween(0.1, 100.0));
  command.add_option("--high", parameters.high, "sigma, winsorised: deviations allowed above (default: 3)")
      ->check(NumberBetween(0.1, 100.0));
  AddScalingOptions(command, *options);
  command
      .add_option("--scale", options->scale,
                  "Join raw samples, or 256 for the scale of each frame's levels (default: raw)")
      ->check(CLI::IsMember({"raw", "256"}));
}

}  // namespace

void AddStackCommand(CLI::App& app, CommandContext& context) {
  auto options = std::make_shared<StackOptions>();
  CLI::App* command = app.add_subcommand("stack", "Join frames into one");
  command->footer("Example: orbimg stack alignment.json --mode median -o stack.fits");
  command->add_option("frames", options->inputs, "An alignment file (.json), or frames that lie alike")->required();
  AddModeOptions(*command, options);
  command->add_option("-o,--output", options->output, "File for the stack: .fits, .tif or .png")->required();
  command->add_option("--preview", options->preview, "Picture (.png, .bmp) to look at");
  AddCommonOptions(*command, options->common, {.writes = true, .runsParallel = true, .usesBands = true});
  command->callback([options, &context] { context.run = [options, &context] { RunStack(*options, context); }; });
}

}  // namespace orb::host
