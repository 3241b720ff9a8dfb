// orbimg measure region and sky: numbers of a rectangle.
#include <algorithm>
#include <array>
#include <memory>

#include <fmt/format.h>
#include <hosts/orbimg/frame_statistics.h>
#include <hosts/orbimg/measure_report.h>
#include <hosts/orbimg/rectangle_option.h>

namespace orb::host {
namespace {

struct RegionOptions {
  MeasureOptions common;
  std::vector<int> rect;
  std::vector<int> centre;
  int size = 11;
};

CRect WholeOf(COrbImage const& image) { return CRect(0, 0, image.GetWidth(), image.GetHeight()); }

// The rectangle, the square, or the whole image.
CRect RegionOf(RegionOptions const& options, COrbImage const& image) {
  if (options.centre.empty()) return MakeRect(options.rect, image).value_or(WholeOf(image));
  int const x = options.centre[0];
  int const y = options.centre[1];
  int const h = options.size / 2;
  bool const fits = x >= h && y >= h && x < image.GetWidth() - h && y < image.GetHeight() - h;
  if (fits) return CRect(x - h, y - h, x + h + 1, y + h + 1);
  throw HostError(Exit::kUsage, fmt::format("--centre: {} pixels a side around {} {} reach beyond the image of {} x {}",
                                            2 * h + 1, x, y, image.GetWidth(), image.GetHeight()));
}

Json ToJson(CRect const& rect) { return Json{rect.left, rect.top, rect.right, rect.bottom}; }

std::string ToText(CRect const& rect) {
  return fmt::format("{} {} {} {}", rect.left, rect.top, rect.right, rect.bottom);
}

Report ReportRegion(std::string const& file, CRect const& rect, COrbImage const& image) {
  using Three = std::array<double, 3>;
  Three maximum;
  Three minimum;
  Three mean;
  Three deviation;
  Three median;
  CalcPixelInfo(image, rect, maximum.data(), minimum.data(), mean.data(), deviation.data(), median.data());
  Report report;
  report.text = fmt::format("# {}: {}\n# plane           max           min          mean     deviation        median\n",
                            file, ToText(rect));
  Json planes = Json::array();
  for (std::size_t p = 0; p < static_cast<std::size_t>(std::min(image.GetPlanes(), 3)); ++p) {
    report.text += fmt::format("{:7} {:13.8g} {:13.8g} {:13.8g} {:13.8g} {:13.8g}\n", p, maximum[p], minimum[p],
                               mean[p], deviation[p], median[p]);
    planes.push_back(Json{{"max", FiniteOrNull(maximum[p])},
                          {"min", FiniteOrNull(minimum[p])},
                          {"mean", FiniteOrNull(mean[p])},
                          {"deviation", FiniteOrNull(deviation[p])},
                          {"median", FiniteOrNull(median[p])}});
  }
  report.json = Json{{"file", file}, {"rect", ToJson(rect)}, {"planes", planes}};
  return report;
}

Report ReportSky(std::string const& file, CRect const& rect, COrbImage const& image) {
  Report report;
  report.text = fmt::format("# {}: {}\n# plane         level         noise       samples\n", file, ToText(rect));
  Json planes = Json::array();
  for (int p = 0; p < image.GetPlanes(); ++p) {
    SampleStatistics const sky = MeasureSky(image, p, &rect);
    report.text += fmt::format("{:7} {:13.8g} {:13.6g} {:13}\n", p, sky.level, sky.noise, sky.samples);
    planes.push_back(Json{{"level", sky.level}, {"noise", sky.noise}, {"samples", sky.samples}});
  }
  report.json = Json{{"file", file}, {"rect", ToJson(rect)}, {"planes", planes}};
  return report;
}

template <typename MakeReport>
void AddOfRegion(CLI::App& group, std::string const& name, std::string const& help, MakeReport report,
                 CommandContext& context) {
  auto options = std::make_shared<RegionOptions>();
  CLI::App* command = group.add_subcommand(name, help);
  command->footer(fmt::format("Example: orbimg measure {} stack.fits --rect 100 100 200 200", name));
  AddMeasureOptions(*command, options->common);
  CLI::Option* const rect =
      command->add_option("--rect", options->rect, "Left, top, right, bottom, the last two one past the end")
          ->expected(4);
  command->add_option("--centre", options->centre, "Middle of a square instead, pixels")
      ->type_name("X Y")
      ->expected(2)
      ->excludes(rect);
  command->add_option("--size", options->size, "Side of the square, odd; an even one is one more (default: 11)")
      ->check(CLI::Range(1, 100000));
  command->callback([options, report, &context] {
    context.run = [options, report, &context] {
      ReportFiles(options->common, context, [&](std::string const& file, COrbImage& image) {
        return report(file, RegionOf(*options, image), image);
      });
    };
  });
}

}  // namespace

void AddMeasureRegion(CLI::App& group, CommandContext& context) {
  AddOfRegion(group, "region", "Extremes, mean, deviation and median of a rectangle", ReportRegion, context);
}

void AddMeasureSky(CLI::App& group, CommandContext& context) {
  AddOfRegion(group, "sky", "Level and noise of the sky, whatever stars stand on it", ReportSky, context);
}

}  // namespace orb::host
