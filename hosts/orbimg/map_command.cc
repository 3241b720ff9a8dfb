// orbimg map: the disk of a planet as a map of longitude and latitude.
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <hosts/catalogue/catalogue.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/operator_job.h>
#include <hosts/orbimg/operator_options.h>
#include <hosts/orbimg/output_check.h>
#include <hosts/orbimg/preview.h>
#include <nlohmann/json.hpp>

namespace orb::host {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kLeastWidth = 2;
constexpr int kMostWidth = 65536;
constexpr double kMostPlace = 1e6;  // pixels

struct MapOptions {
  OperatorEntry const* entry = nullptr;
  std::string input;
  std::string output;
  std::string preview;
  std::vector<double> disk;    // left top right bottom
  std::vector<double> center;  // x y
  double radius = 0.0;
  int width = 1024;
  std::vector<double> values;  // of the operator; not a number where it was not given
  bool json = false;
  CommonOptions common;
};

double& ValueOf(MapOptions& options, char const* parameter) {
  return options.values[static_cast<std::size_t>(options.entry->Find(parameter))];
}

// The outermost columns and rows of the disk: its middle, and its radii along equator and axis.
void TakeDisk(MapOptions& options) {
  double const left = options.disk[0];
  double const top = options.disk[1];
  double const right = options.disk[2];
  double const bottom = options.disk[3];
  if (!(left < right) || !(top < bottom)) {
    throw HostError(Exit::kUsage, fmt::format("--disk: {} {} {} {} is no disk; give its left, top, right and bottom",
                                              left, top, right, bottom));
  }
  ValueOf(options, "x") = 0.5 * (left + right);
  ValueOf(options, "y") = 0.5 * (top + bottom);
  ValueOf(options, "radius") = 0.5 * (right - left);
  double& flattening = ValueOf(options, "flattening");
  if (std::isnan(flattening)) flattening = (bottom - top) / (right - left);
}

void FindValues(MapOptions& options) {
  if (!options.disk.empty()) {
    TakeDisk(options);
  } else if (!options.center.empty() && options.radius > 0.0) {
    ValueOf(options, "x") = options.center[0];
    ValueOf(options, "y") = options.center[1];
    ValueOf(options, "radius") = options.radius;
  } else {
    throw HostError(Exit::kUsage, "map: where is the disk? Give --disk, or --center and a --radius above 0");
  }
  std::vector<double> const byDefault = options.entry->Defaults();
  for (std::size_t i = 0; i < byDefault.size(); ++i) {
    if (std::isnan(options.values[i])) options.values[i] = byDefault[i];
  }
}

void WarnOfDisk(MapOptions& options, COrbImage const& image, Environment& environment) {
  double const x = ValueOf(options, "x");
  double const y = ValueOf(options, "y");
  double const radius = ValueOf(options, "radius");
  if (x - radius >= 0.0 && x + radius <= image.GetWidth() - 1 && y - radius >= 0.0 &&
      y + radius <= image.GetHeight() - 1) {
    return;
  }
  environment.Warn(
      fmt::format("{}: a disk of radius {} around {}, {} reaches beyond the image of {} x {}; what lies "
                  "there is 0 on the map",
                  options.input, radius, x, y, image.GetWidth(), image.GetHeight()));
}

void MakeMapImage(int width, COrbImage const& photograph, COrbImage& map) {
  map.CopyImage(COrbImage(-32, width, width / 2, photograph.GetPlanes(), 1.0, 0.0, 1, nullptr, nullptr), nullptr,
                nullptr);
}

void Print(MapOptions& options, COrbImage const& map, CommandContext& context) {
  if (!options.json) return;
  Json values = Json::object();
  std::vector<Parameter> const& parameters = options.entry->parameters;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    bool const isFlag = parameters[i].kind == Parameter::Kind::kFlag;
    values[parameters[i].name] = isFlag ? Json(options.values[i] != 0.0) : Json(options.values[i]);
  }
  context.out << Json{{"file", options.output},
                      {"width", map.GetWidth()},
                      {"height", map.GetHeight()},
                      {"parameters", values}}
                     .dump(2)
              << '\n';
}

void RunMap(MapOptions& options, CommandContext& context) {
  Environment environment(context.out, context.err, options.common);
  FindValues(options);
  CheckImageFile(options.output, environment.existing);
  if (!options.preview.empty()) CheckPictureFile(options.preview, environment.existing);
  Frame photograph;
  ReadForWork(options.input, photograph, environment);
  WarnOfDisk(options, photograph.image, environment);
  Frame map;
  map.header = photograph.header;
  MakeMapImage(options.width, photograph.image, map.image);
  Invocation call;
  call.image = &map.image;
  call.source = &photograph.image;
  call.values = options.values;
  call.progress = 1;
  RunChecked(*options.entry, call, options.input, environment);
  map.header.RemoveWcs();
  map.header.AddHistory("orbimg map: " + DescribeValues(options.entry->parameters, options.values));
  WriteImage(options.output, map, environment);
  if (!options.preview.empty()) WriteRendering(options.preview, map.image, 24, environment.existing);
  Print(options, map.image, context);
}

}  // namespace

void AddMapCommand(CLI::App& app, CommandContext& context) {
  auto options = std::make_shared<MapOptions>();
  options->entry = FindOperator("map");
  options->values.assign(options->entry->parameters.size(), std::nan(""));
  CLI::App* command = app.add_subcommand("map", Capitalised(options->entry->title));
  command->footer("Example: orbimg map jupiter.fits --disk 36 28 234 226 --tilt-x 15 --graticule -o map.fits");
  command->add_option("file", options->input, "Image: FITS, TIFF, PNG, BMP or camera raw")->required();
  CLI::Option* disk =
      command->add_option("--disk", options->disk,
                          "Left, top, right and bottom of the disk, pixels, row 0 on top: its centre, radius and "
                          "flattening follow");
  disk->expected(4)->check(NumberBetween(-kMostPlace, kMostPlace));
  command->add_option("--center", options->center, "Column and row of the disk's centre, pixels, row 0 on top")
      ->expected(2)
      ->check(NumberBetween(-kMostPlace, kMostPlace))
      ->excludes(disk);
  command->add_option("--radius", options->radius, "The disk's radius along its equator, pixels")
      ->check(NumberBetween(0.0, kMostPlace))
      ->excludes(disk);
  AddParameterOptions(*command, options->entry->parameters, options->values, {"x", "y", "radius"});
  command->add_option("--width", options->width, "Of the map, pixels; it is half as high (default: 1024)")
      ->check(CLI::Range(kLeastWidth, kMostWidth));
  command->add_option("-o,--output", options->output, "File to write: .fits, .tif or .png")->required();
  command->add_option("--preview", options->preview, "Picture (.png, .bmp) of the map through its levels");
  command->add_flag("--json", options->json, "Print JSON");
  AddCommonOptions(*command, options->common, {.writes = true, .runsParallel = false, .usesBands = false});
  command->callback([options, &context] { context.run = [options, &context] { RunMap(*options, context); }; });
}

}  // namespace orb::host
