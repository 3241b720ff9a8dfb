// orbimg mosaic: two images on one canvas that is large enough for both.
#include <cmath>
#include <memory>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <hosts/catalogue/catalogue.h>
#include <hosts/orbimg/add_constant.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/composition_header.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/mosaic_canvas.h>
#include <hosts/orbimg/operator_job.h>
#include <hosts/orbimg/operator_options.h>
#include <hosts/orbimg/output_check.h>
#include <hosts/orbimg/placement.h>
#include <hosts/orbimg/preview.h>
#include <nlohmann/json.hpp>

namespace orb::host {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::int64_t kLeastOverlap = 25;  // pixels, to compare brightness in

struct MosaicOptions {
  OperatorEntry const* entry = nullptr;
  std::string first;
  std::string second;
  PlacementOptions placement;
  std::vector<double> values;  // of the operator
  bool matchLevels = false;
  std::string output;
  std::string preview;
  bool json = false;
  CommonOptions common;

  double& Value(std::string const& name) { return values[static_cast<std::size_t>(entry->Find(name))]; }
  double Value(std::string const& name) const { return values[static_cast<std::size_t>(entry->Find(name))]; }
};

FrameTransform PlaceSecond(MosaicOptions const& options, COrbImage& first, COrbImage& second,
                           Environment& environment) {
  if (options.placement.IsGiven()) {
    return PlaceImages(options.placement, {{options.first, &first}, {options.second, &second}}, environment)[1];
  }
  FrameTransform transform;
  transform.dx = options.Value("dx");
  transform.dy = options.Value("dy");
  transform.angle = options.Value("angle");
  transform.cx = (second.GetWidth() - 1) / 2.0;
  transform.cy = (second.GetHeight() - 1) / 2.0;
  return transform;
}

// Adds to each plane of the second image what brings it to the first, and tells how much.
std::vector<double> MatchLevels(MosaicOptions const& options, COrbImage& first, COrbImage& second,
                                FrameTransform const& transform) {
  if (first.GetPlanes() != second.GetPlanes()) {
    throw HostError(Exit::kUsage, fmt::format("--match-levels: {} has {} planes, {} has {}; give images of one kind",
                                              options.first, first.GetPlanes(), options.second, second.GetPlanes()));
  }
  std::vector<double> added;
  for (int p = 0; p < second.GetPlanes(); ++p) {
    SampleStatistics const difference = CompareOverlap(first, second, transform, p);
    if (difference.samples < kLeastOverlap) {
      throw HostError(Exit::kFailed,
                      fmt::format("--match-levels: {} and {} share {} pixels, which are too few; check how they lie",
                                  options.first, options.second, difference.samples));
    }
    AddConstant(second.GetImageAdr(0, 0, p, 0, nullptr),
                static_cast<std::int64_t>(second.GetWidth()) * second.GetHeight(), difference.level);
    added.push_back(difference.level);
  }
  return added;
}

COrbImage MakeCanvas(MosaicCanvas const& canvas, COrbImage const& first, COrbImage const& second,
                     Environment const& environment) {
  int const planes = first.IsColor() != 0 || second.IsColor() != 0 ? 3 : 1;
  double const bytes = static_cast<double>(sizeof(float)) *
                       (static_cast<double>(canvas.width) * static_cast<double>(canvas.height) * planes +
                        static_cast<double>(first.GetPixelCount()) + static_cast<double>(second.GetPixelCount()));
  if (bytes > static_cast<double>(environment.memory)) {
    throw HostError(Exit::kResources,
                    fmt::format("--memory: a canvas of {} x {} and the two images take {}; give at least {:.0f}K, or "
                                "check how they lie",
                                canvas.width, canvas.height, FormatBytes(static_cast<std::int64_t>(bytes)),
                                std::ceil(bytes / 1024.0)));
  }
  COrbImage image(-32, static_cast<int>(canvas.width), static_cast<int>(canvas.height), planes, 1.0, 0.0, 1, nullptr,
                  nullptr);
  for (int p = 0; p < planes; ++p) {
    int const of = first.IsColor() != 0 ? p : 0;
    image.CImage::SetLevel(p, first.GetLevelMin(of), first.GetLevelMax(of));
  }
  return image;
}

// What was found out on the way.
struct MosaicReport {
  MosaicCanvas canvas;
  FrameTransform transform;
  std::vector<double> added;  // to the planes of the second image
};

void AddHistory(MosaicOptions const& options, MosaicReport const& report, FitsHeader& header) {
  header.AddHistory("orbimg mosaic: " +
                    DescribeValues(options.entry->parameters, options.values, {"dx", "dy", "angle"}));
  header.AddHistory(fmt::format("orbimg mosaic: {} and {} {}", BareName(options.first), BareName(options.second),
                                report.transform.Text()));
  if (report.added.empty()) return;
  header.AddHistory(
      fmt::format("orbimg mosaic: added to {}: {:.6g}", BareName(options.second), fmt::join(report.added, " ")));
}

void Print(MosaicOptions const& options, MosaicReport const& report, CommandContext& context) {
  MosaicCanvas const& canvas = report.canvas;
  if (options.json) {
    context.out << Json{{"file", options.output}, {"width", canvas.width}, {"height", canvas.height},
                        {"x", canvas.x},          {"y", canvas.y},         {"placement", ToJson(report.transform)},
                        {"added", report.added}}
                       .dump(2)
                << '\n';
    return;
  }
  context.out << fmt::format("{}: {} x {}, {} at {} {}\n", options.output, canvas.width, canvas.height, options.first,
                             canvas.x, canvas.y);
  context.out << fmt::format("{}: {}\n", options.second, report.transform.Text());
  if (report.added.empty()) return;
  context.out << fmt::format("{}: added {:.6g}\n", options.second, fmt::join(report.added, " "));
}

// The operator on the canvas, the images lying as reported.
void Paste(MosaicOptions& options, MosaicReport const& report, Frame& first, Frame& second, Frame& result,
           Environment& environment) {
  FrameTransform const& transform = report.transform;
  second.image.SetStdCtr(transform.cx, transform.cy);
  options.Value("x") = static_cast<double>(report.canvas.x);
  options.Value("y") = static_cast<double>(report.canvas.y);
  options.Value("dx") = transform.dx;
  options.Value("dy") = transform.dy;
  options.Value("angle") = transform.angle;
  Invocation call;
  call.image = &result.image;
  call.source = &first.image;
  call.second = &second.image;
  call.values = options.values;
  call.progress = 1;
  RunChecked(*options.entry, call, options.first, environment);
}

void RunMosaic(MosaicOptions options, CommandContext& context) {
  Environment environment(context.out, context.err, options.common);
  CheckImageFile(options.output, environment.existing);
  if (!options.preview.empty()) CheckPictureFile(options.preview, environment.existing);
  Frame first;
  Frame second;
  ReadForWork(options.first, first, environment);
  ReadForWork(options.second, second, environment);
  MosaicReport report;
  report.transform = PlaceSecond(options, first.image, second.image, environment);
  report.canvas = FindCanvas(first.image, second.image, report.transform);
  Frame result;
  result.image = MakeCanvas(report.canvas, first.image, second.image, environment);
  if (options.matchLevels) report.added = MatchLevels(options, first.image, second.image, report.transform);
  Paste(options, report, first, second, result, environment);
  result.header = JoinHeaders({&first.header, &second.header});
  result.header.RemoveWcs();
  AddHistory(options, report, result.header);
  WriteImage(options.output, result, environment);
  if (!options.preview.empty()) WritePreview(options.output, options.preview, environment.existing);
  Print(options, report, context);
}

}  // namespace

void AddMosaicCommand(CLI::App& app, CommandContext& context) {
  auto options = std::make_shared<MosaicOptions>();
  options->entry = FindOperator("mosaic");
  options->values = options->entry->Defaults();
  CLI::App* command = app.add_subcommand("mosaic", "Paste two images onto one canvas that holds both");
  command->footer("Example: orbimg mosaic left.fits right.fits --align --match-levels -o canvas.fits");
  command->add_option("first", options->first, "Image file, which stays as it lies")->required();
  command->add_option("second", options->second, "Image file, laid over the first")->required();
  AddPlacementOptions(*command, options->placement);
  AddParameterOptions(*command, options->entry->parameters, options->values, {"x", "y"});
  for (char const* moved : {"--dx", "--dy", "--angle"}) {
    command->get_option(moved)->excludes(command->get_option("--align"))->excludes(command->get_option("--alignment"));
  }
  command->add_flag("--match-levels", options->matchLevels,
                    "First add to the second image what makes it as bright as the first where both have samples");
  command->add_option("-o,--output", options->output, "File to write: .fits, .tif or .png")->required();
  command->add_option("--preview", options->preview, "Picture (.png, .bmp) to look at");
  command->add_flag("--json", options->json, "Print JSON: the canvas, and how the images lie");
  AddCommonOptions(*command, options->common, {.writes = true, .runsParallel = true, .usesBands = true});
  command->callback([options, &context] { context.run = [options, &context] { RunMosaic(*options, context); }; });
}

}  // namespace orb::host
