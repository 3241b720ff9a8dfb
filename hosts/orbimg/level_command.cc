// orbimg level: sets the display levels, the black and the white of an image. Samples stay as they are.
#include <cmath>
#include <memory>
#include <optional>

#include <fmt/format.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/output_check.h>
#include <hosts/orbimg/preview.h>
#include <hosts/orbimg/rectangle_option.h>
#include <nlohmann/json.hpp>

namespace orb::host {
namespace {

using Json = nlohmann::ordered_json;
using Pair = std::vector<double>;  // of two

struct LevelOptions {
  std::string input;
  std::string output;
  std::string preview;
  Pair area;
  Pair mean;
  Pair median;
  Pair values;
  std::optional<double> fixedRange;
  bool perPlane = false;
  std::vector<int> rect;
  bool json = false;
  CommonOptions common;
};

bool Measures(LevelOptions const& options) { return options.values.empty(); }

void CheckValues(LevelOptions const& options) {
  if (!options.values.empty() && !(options.values[0] < options.values[1])) {
    throw HostError(Exit::kUsage, fmt::format("--set: black {} is not below white {}; give black first",
                                              options.values[0], options.values[1]));
  }
  if (options.fixedRange && !(*options.fixedRange > 0.0)) {
    throw HostError(Exit::kUsage,
                    fmt::format("--fixed: a range of {} shows nothing; give one above 0", *options.fixedRange));
  }
}

// Sets the levels and says what was done.
std::string ApplyLevels(LevelOptions const& options, CImgAutoLevel& image) {
  std::optional<CRect> rect = MakeRect(options.rect, image);
  CRect* const area = rect ? &*rect : nullptr;
  int const perPlane = options.perPlane ? 1 : 0;
  if (!options.area.empty()) {
    image.Do(options.area[0], options.area[1], perPlane, area);
    return fmt::format("CImgAutoLevel::Do, {} to {} of the area", options.area[0], options.area[1]);
  }
  if (!options.mean.empty()) {
    image.DoByMean(options.mean[0], options.mean[1], perPlane, area);
    return fmt::format("CImgAutoLevel::DoByMean, -{} to +{} deviations", options.mean[0], options.mean[1]);
  }
  if (!options.median.empty()) {
    image.DoByMedian(options.median[0], options.median[1], perPlane, area, 0.0);
    return fmt::format("CImgAutoLevel::DoByMedian, -{} to +{} deviations", options.median[0], options.median[1]);
  }
  if (options.fixedRange) {
    image.DoByMedian(0.0, 0.0, perPlane, area, *options.fixedRange);
    return fmt::format("CImgAutoLevel::DoByMedian, range {}", *options.fixedRange);
  }
  for (int p = 0; p < image.GetPlanes(); ++p) image.CImage::SetLevel(p, options.values[0], options.values[1]);
  return fmt::format("SetLevel, {} to {}", options.values[0], options.values[1]);
}

void CheckMeasurable(LevelOptions const& options, Frame const& frame) {
  if (Measures(options) && frame.nonFinite != 0) {
    throw HostError(Exit::kFailed,
                    fmt::format("{}: {} samples are not finite, so its levels cannot be measured; repair the "
                                "frame or give --set",
                                options.input, frame.nonFinite));
  }
  if (options.fixedRange && frame.image.IsColor() != 0) {
    throw HostError(Exit::kUsage, fmt::format("{}: --fixed is for mono images; use --median", options.input));
  }
}

void CheckLevels(LevelOptions const& options, COrbImage const& image) {
  for (int p = 0; p < image.GetPlanes(); ++p) {
    if (std::isfinite(image.GetLevelRange(p)) && image.GetLevelRange(p) > 0.0) continue;
    throw HostError(Exit::kFailed,
                    fmt::format("{}: black would be {} and white {}, which shows nothing; give other factors "
                                "or --set",
                                options.input, image.GetLevelMin(p), image.GetLevelMax(p)));
  }
}

void Print(LevelOptions const& options, COrbImage const& image, CommandContext& context) {
  Json planes = Json::array();
  for (int p = 0; p < image.GetPlanes(); ++p) {
    planes.push_back(Json{{"black", image.GetLevelMin(p)}, {"white", image.GetLevelMax(p)}});
    if (options.json) continue;
    context.out << fmt::format("{}: plane {}: black {:.9g}, white {:.9g}\n", options.output, p, image.GetLevelMin(p),
                               image.GetLevelMax(p));
  }
  if (options.json) context.out << Json{{"file", options.output}, {"levels", planes}}.dump(2) << '\n';
}

void RunLevel(LevelOptions const& options, CommandContext& context) {
  Environment environment(context.out, context.err, options.common);
  CheckValues(options);
  CheckImageFile(options.output, environment.existing);
  if (!options.preview.empty()) CheckPictureFile(options.preview, environment.existing);
  Frame frame;
  ReadImage(options.input, frame, environment);
  CheckMeasurable(options, frame);
  CImgAutoLevel image;
  image.Swap(&frame.image);
  frame.header.AddHistory("orbimg level: " + ApplyLevels(options, image));
  CheckLevels(options, image);
  image.Swap(&frame.image);
  WriteImage(options.output, frame, environment);
  if (!options.preview.empty()) WriteRendering(options.preview, frame.image, 24, environment.existing);
  Print(options, frame.image, context);
}

}  // namespace

void AddLevelCommand(CLI::App& app, CommandContext& context) {
  auto options = std::make_shared<LevelOptions>();
  CLI::App* command = app.add_subcommand("level", "Set the display levels; samples stay as they are");
  command->footer("Example: orbimg level stack.fits --median 1 6 -o levelled.fits");
  command->add_option("file", options->input, "Image: FITS, TIFF, PNG, BMP or camera raw")->required();
  CLI::Option_group* how = command->add_option_group("how", "Where black and white lie; one of these");
  how->add_option("--area", options->area, "At two fractions of the histogram's area, for example 0.01 0.995")
      ->expected(2)
      ->check(NumberBetween(-1e30, 1e30));
  how->add_option("--mean", options->mean, "So many deviations below and above the mean")
      ->expected(2)
      ->check(NumberBetween(-1e30, 1e30));
  how->add_option("--median", options->median, "So many deviations below and above the median")
      ->expected(2)
      ->check(NumberBetween(-1e30, 1e30));
  how->add_option("--fixed", options->fixedRange, "From just above the tenth percentile, a range of so many units")
      ->check(NumberBetween(-1e30, 1e30));
  how->add_option("--set", options->values, "Black and white in the units of the samples")
      ->expected(2)
      ->check(NumberBetween(-1e30, 1e30));
  how->require_option(1);
  command->add_flag("--per-plane", options->perPlane, "Each plane of a colour image by itself");
  command->add_option("--rect", options->rect, "Measure within left top right bottom")->expected(4);
  command->add_option("-o,--output", options->output, "File to write: .fits, .tif or .png")->required();
  command->add_option("--preview", options->preview, "Picture (.png, .bmp) through the new levels");
  command->add_flag("--json", options->json, "Print JSON");
  AddCommonOptions(*command, options->common, {.writes = true, .runsParallel = false, .usesBands = false});
  command->callback([options, &context] { context.run = [options, &context] { RunLevel(*options, context); }; });
}

}  // namespace orb::host
