// orbimg mosaic: two images on one canvas that is large enough for both.
#include <cmath>
#include <memory>

#include <fmt/format.h>
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

namespace orb::host {
namespace {

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
std::string MatchLevels(MosaicOptions const& options, COrbImage& first, COrbImage& second,
                        FrameTransform const& transform) {
  if (first.GetPlanes() != second.GetPlanes()) {
    throw HostError(Exit::kUsage, fmt::format("--match-levels: {} has {} planes, {} has {}; give images of one kind",
                                              options.first, first.GetPlanes(), options.second, second.GetPlanes()));
  }
  std::string text;
  for (int p = 0; p < second.GetPlanes(); ++p) {
    SampleStatistics const difference = CompareOverlap(first, second, transform, p);
    if (difference.samples < kLeastOverlap) {
      throw HostError(Exit::kFailed,
                      fmt::format("--match-levels: {} and {} share {} pixels, which are too few; check how they lie",
                                  options.first, options.second, difference.samples));
    }
    AddConstant(second.GetImageAdr(0, 0, p, 0, nullptr),
                static_cast<std::int64_t>(second.GetWidth()) * second.GetHeight(), difference.level);
    text += fmt::format("{}{:.6g}", p == 0 ? "" : ", ", difference.level);
  }
  return text;
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

void AddHistory(MosaicOptions const& options, FrameTransform const& transform, std::string const& added,
                FitsHeader& header) {
  header.AddHistory("orbimg mosaic: " +
                    DescribeValues(options.entry->parameters, options.values, {"dx", "dy", "angle"}));
  header.AddHistory(
      fmt::format("orbimg mosaic: {} and {} {}", BareName(options.first), BareName(options.second), transform.Text()));
  if (!added.empty()) {
    header.AddHistory(fmt::format("orbimg mosaic: {} made brighter by {}", BareName(options.second), added));
  }
}

void RunMosaic(MosaicOptions options, CommandContext& context) {
  Environment environment(context.out, context.err, options.common);
  CheckOutputFile(options.output, environment.existing);
  if (!options.preview.empty()) CheckPictureFile(options.preview, environment.existing);
  Frame first;
  Frame second;
  ReadForWork(options.first, first, environment);
  ReadForWork(options.second, second, environment);
  FrameTransform const transform = PlaceSecond(options, first.image, second.image, environment);
  MosaicCanvas const canvas = FindCanvas(first.image, second.image, transform);
  Frame result;
  result.image = MakeCanvas(canvas, first.image, second.image, environment);
  std::string const added =
      options.matchLevels ? MatchLevels(options, first.image, second.image, transform) : std::string();
  second.image.SetStdCtr(transform.cx, transform.cy);
  options.Value("x") = static_cast<double>(canvas.x);
  options.Value("y") = static_cast<double>(canvas.y);
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
  result.header = JoinHeaders({&first.header, &second.header});
  result.header.RemoveWcs();
  AddHistory(options, transform, added, result.header);
  WriteFits(options.output, result, environment.existing);
  if (!options.preview.empty()) WritePreview(options.output, options.preview, environment.existing);
}

}  // namespace

void AddMosaicCommand(CLI::App& app, CommandContext& context) {
  auto options = std::make_shared<MosaicOptions>();
  options->entry = FindOperator("mosaic");
  options->values = options->entry->Defaults();
  CLI::App* command = app.add_subcommand("mosaic", "Paste two images onto one canvas that holds both");
  command->add_option("first", options->first, "FITS or PNG file, which stays as it lies")->required();
  command->add_option("second", options->second, "FITS or PNG file, laid over the first")->required();
  AddPlacementOptions(*command, options->placement);
  AddParameterOptions(*command, options->entry->parameters, options->values, {"x", "y"});
  for (char const* moved : {"--dx", "--dy", "--angle"}) {
    command->get_option(moved)->excludes(command->get_option("--align"))->excludes(command->get_option("--alignment"));
  }
  command->add_flag("--match-levels", options->matchLevels,
                    "First add to the second image what makes it as bright as the first where both have samples");
  command->add_option("-o,--output", options->output, "FITS file to write")->required();
  command->add_option("--preview", options->preview, "Picture (.png, .bmp) to look at");
  AddCommonOptions(*command, options->common, {.writes = true, .runsParallel = true, .usesBands = true});
  command->callback([options, &context] { context.run = [options, &context] { RunMosaic(*options, context); }; });
}

}  // namespace orb::host
