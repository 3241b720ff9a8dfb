// orbimg plot: charts of images and curves.
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include <fmt/format.h>
#include <hosts/catalogue/catalogue.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/curve_options.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/output_check.h>
#include <hosts/orbimg/plot.h>
#include <hosts/orbimg/preview.h>
#include <nlohmann/json.hpp>

namespace orb::host {
namespace {

using Json = nlohmann::ordered_json;

constexpr COLORREF kMono = RGB(30, 30, 30);
constexpr COLORREF kColours[] = {RGB(205, 30, 30), RGB(15, 140, 15), RGB(30, 60, 220)};
constexpr int kCurvePoints = 513;

struct PlotOptions {
  std::string input;
  std::string output;
  std::vector<double> range;
  int bins = 256;
  bool logarithmic = false;
  std::vector<double> from;
  std::vector<double> to;
  CurveOptions curves;
  std::vector<int> size{960, 600};
  bool json = false;
  CommonOptions common;
};

COLORREF ColourOf(int plane, int planes) { return planes == 3 ? kColours[plane] : kMono; }

Plot MakePlot(PlotOptions const& options, std::string const& title, std::string const& xLabel) {
  Plot plot;
  plot.width = options.size[0];
  plot.height = options.size[1];
  plot.title = title;
  plot.xLabel = xLabel;
  return plot;
}

void Finish(PlotOptions const& options, Plot const& plot, Environment& environment) {
  COrbImage image;
  DrawPlot(plot, image);
  WriteRendering(options.output, image, 24, environment.existing);
  if (!options.json) return;
  Json series = Json::array();
  for (PlotSeries const& one : plot.series) series.push_back(Json{{"x", one.x}, {"y", one.y}});
  environment.out << Json{{"file", options.output}, {"title", plot.title}, {"series", series}}.dump(2) << '\n';
}

// The smallest and largest finite sample of all planes.
std::pair<double, double> FindExtent(PlotOptions const& options, COrbImage const& image) {
  if (!options.range.empty()) return {options.range[0], options.range[1]};
  float low = std::numeric_limits<float>::infinity();
  float high = -low;
  float const* const samples = image.GetImageAdr(0, 0, 0, 1, nullptr);
  for (std::ptrdiff_t i = 0; i < image.GetPixelCount(); ++i) {
    if (!std::isfinite(samples[i])) continue;
    low = std::min(low, samples[i]);
    high = std::max(high, samples[i]);
  }
  if (low > high) throw HostError(Exit::kFailed, fmt::format("{}: has no finite sample to count", options.input));
  return {low, high > low ? high : low + 1.0};
}

// How many samples v of a plane have floor((v - low) / (high - low) * bins) = i; v = high counts to the last class.
PlotSeries CountPlane(PlotOptions const& options, COrbImage const& image, int plane, double low, double high) {
  PlotSeries series;
  series.color = ColourOf(plane, image.GetPlanes());
  series.y.assign(static_cast<std::size_t>(options.bins), 0.0);
  for (int i = 0; i < options.bins; ++i) series.x.push_back(low + (high - low) * (i + 0.5) / options.bins);
  float const* const samples = image.GetImageAdr(0, 0, plane, 1, nullptr);
  std::ptrdiff_t const count = static_cast<std::ptrdiff_t>(image.GetWidth()) * image.GetHeight();
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    if (!(low <= samples[i] && samples[i] <= high)) continue;
    auto const bin = static_cast<int>((samples[i] - low) / (high - low) * options.bins);
    series.y[static_cast<std::size_t>(std::min(bin, options.bins - 1))] += 1.0;
  }
  return series;
}

void RunHistogram(PlotOptions const& options, CommandContext& context) {
  Environment environment(context.out, context.err, options.common);
  CheckPictureFile(options.output, environment.existing);
  if (!options.range.empty() && !(options.range[0] < options.range[1])) {
    throw HostError(Exit::kUsage, fmt::format("--range: {} is not below {}; give the lower end first", options.range[0],
                                              options.range[1]));
  }
  Frame frame;
  ReadImage(options.input, frame, environment);
  auto const [low, high] = FindExtent(options, frame.image);
  Plot plot = MakePlot(options, fmt::format("{}: samples of a value", BareName(options.input)), "value");
  plot.logarithmic = options.logarithmic;
  for (int p = 0; p < frame.image.GetPlanes(); ++p) {
    plot.series.push_back(CountPlane(options, frame.image, p, low, high));
    plot.marks.push_back(frame.image.GetLevelMin(p));
    plot.marks.push_back(frame.image.GetLevelMax(p));
  }
  Finish(options, plot, environment);
}

void CheckOnImage(std::string const& option, std::vector<double> const& point, COrbImage const& image) {
  bool const isOn =
      0.0 <= point[0] && point[0] <= image.GetWidth() - 1 && 0.0 <= point[1] && point[1] <= image.GetHeight() - 1;
  if (isOn) return;
  throw HostError(Exit::kUsage, fmt::format("{}: {} {} lies off the image; x goes from 0 to {}, y from 0 to {}", option,
                                            point[0], point[1], image.GetWidth() - 1, image.GetHeight() - 1));
}

// From end to end in equal steps of a pixel at most, between the pixels by the four around.
void RunProfile(PlotOptions const& options, CommandContext& context) {
  Environment environment(context.out, context.err, options.common);
  CheckPictureFile(options.output, environment.existing);
  Frame frame;
  ReadImage(options.input, frame, environment);
  CheckOnImage("--from", options.from, frame.image);
  CheckOnImage("--to", options.to, frame.image);
  double const dx = options.to[0] - options.from[0];
  double const dy = options.to[1] - options.from[1];
  double const length = std::hypot(dx, dy);
  auto const steps = std::max(1, static_cast<int>(std::ceil(length)));
  Plot plot = MakePlot(options,
                       fmt::format("{}: from {:g} {:g} to {:g} {:g}", BareName(options.input), options.from[0],
                                   options.from[1], options.to[0], options.to[1]),
                       "pixels along the line");
  for (int p = 0; p < frame.image.GetPlanes(); ++p) {
    PlotSeries series;
    series.color = ColourOf(p, frame.image.GetPlanes());
    for (int i = 0; i <= steps; ++i) {
      double const part = static_cast<double>(i) / steps;
      series.x.push_back(length * part);
      series.y.push_back(frame.image.GetPixelGrayRaw(options.from[0] + dx * part, options.from[1] + dy * part, p));
    }
    plot.series.push_back(std::move(series));
  }
  Finish(options, plot, environment);
}

PlotSeries SampleSeries(ToneCurve const& curve, COLORREF color) {
  PlotSeries series;
  series.color = color;
  for (int i = 0; i < kCurvePoints; ++i) {
    series.x.push_back(static_cast<double>(i) / (kCurvePoints - 1));
    series.y.push_back(curve(series.x.back()));
  }
  return series;
}

void RunCurve(PlotOptions const& options, CommandContext& context) {
  Environment environment(context.out, context.err, options.common);
  CheckPictureFile(options.output, environment.existing);
  CurveSet const curves = ReadCurves(options.curves);
  Plot plot = MakePlot(options, curves.text, "0 is black, 1 is white");
  plot.series.push_back(SampleSeries(curves.master, kMono));
  for (std::size_t p = 0; p < 3 && curves.hasPlanes; ++p) {
    plot.series.push_back(SampleSeries(curves.planes[p], kColours[p]));
  }
  Finish(options, plot, environment);
}

CLI::App* AddKind(CLI::App& group, std::string const& name, std::string const& help, std::string const& example,
                  std::shared_ptr<PlotOptions> const& options) {
  CLI::App* command = group.add_subcommand(name, help);
  if (name != "curve")
    command->add_option("file", options->input, "Image: FITS, TIFF, PNG, BMP or camera raw")->required();
  command->footer(example);
  command->add_option("-o,--output", options->output, "Picture, .png or .bmp")->required();
  command->add_option("--size", options->size, "Width and height of the picture, pixels (default: 960 600)")
      ->expected(2)
      ->check(CLI::Range(240, 8192));
  command->add_flag("--json", options->json, "Print the points of the lines as JSON");
  AddCommonOptions(*command, options->common,
                   {.writes = true, .runsParallel = false, .usesBands = false, .readsFrames = name != "curve"});
  return command;
}

void AddHistogram(CLI::App& group, CommandContext& context) {
  auto options = std::make_shared<PlotOptions>();
  CLI::App* command = AddKind(group, "histogram", "How many samples have which value; thin lines are the levels",
                              "Example: orbimg plot histogram stack.fits --log -o histogram.png", options);
  command->add_option("--bins", options->bins, "Classes of values (default: 256)")->check(CLI::Range(1, 65536));
  command->add_option("--range", options->range, "Values from and to (default: all)")
      ->expected(2)
      ->check(NumberBetween(-1e30, 1e30));
  command->add_flag("--log", options->logarithmic, "Counts on a logarithmic axis");
  command->callback([options, &context] { context.run = [options, &context] { RunHistogram(*options, context); }; });
}

void AddProfile(CLI::App& group, CommandContext& context) {
  auto options = std::make_shared<PlotOptions>();
  CLI::App* command =
      AddKind(group, "profile", "The samples along a line",
              "Example: orbimg plot profile stack.fits --from 100 200 --to 300 200 -o profile.png", options);
  command->add_option("--from", options->from, "First end x y, pixels, row 0 on top")
      ->expected(2)
      ->required()
      ->check(NumberBetween(-1e6, 1e6));
  command->add_option("--to", options->to, "Other end x y, pixels")
      ->expected(2)
      ->required()
      ->check(NumberBetween(-1e6, 1e6));
  command->callback([options, &context] { context.run = [options, &context] { RunProfile(*options, context); }; });
}

void AddCurve(CLI::App& group, CommandContext& context) {
  auto options = std::make_shared<PlotOptions>();
  CLI::App* command = AddKind(group, "curve", "A tone curve as orbimg apply curve takes it",
                              "Example: orbimg plot curve --preset gamma --amount 2.2 -o curve.png", options);
  AddCurveOptions(*command, *FindOperator("curve"), options->curves);
  command->callback([options, &context] { context.run = [options, &context] { RunCurve(*options, context); }; });
}

}  // namespace

void AddPlotCommand(CLI::App& app, CommandContext& context) {
  CLI::App* group = app.add_subcommand("plot", "Draw a chart: histogram, profile or tone curve");
  group->require_subcommand(1);
  AddHistogram(*group, context);
  AddProfile(*group, context);
  AddCurve(*group, context);
}

}  // namespace orb::host
