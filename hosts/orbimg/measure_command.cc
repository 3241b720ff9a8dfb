// orbimg measure: widths and light of stars, apertures, rectangles and the sky, as tables.
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include <fmt/format.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/measured_positions.h>
#include <hosts/orbimg/rectangle_option.h>
#include <hosts/orbimg/star_measurement.h>
#include <hosts/orbimg/upper_median.h>
#include <nlohmann/json.hpp>

namespace orb::host {
namespace {

using Json = nlohmann::ordered_json;

// One file's part of a report.
struct Report {
  std::string text;
  Json json;
};

struct MeasureOptions {
  std::vector<std::string> files;
  bool json = false;
};

void AddMeasureOptions(CLI::App& command, MeasureOptions& options) {
  command.add_option("files", options.files, "FITS or PNG files")->required();
  command.add_flag("--json", options.json, "Print JSON");
}

// measure(file, frame) makes the report of each file.
template <typename Measure>
void ReportFiles(MeasureOptions const& options, CommandContext& context, Measure measure) {
  Json all = Json::array();
  for (std::string const& file : ExpandFiles(options.files, FileOrder::kNatural)) {
    Frame frame;
    ReadImage(file, frame);
    Report report = measure(file, frame.image);
    if (options.json) {
      all.push_back(std::move(report.json));
    } else {
      context.out << report.text;
    }
  }
  if (options.json) context.out << all.dump(2) << '\n';
}

// JSON has no not-a-number.
Json Number(double v) { return std::isfinite(v) ? Json(v) : Json(nullptr); }

// ---- Stars

struct StarsOptions {
  MeasureOptions common;
  PositionOptions positions;
  double reach = 6.0;
};

// The widths of all stars in focus in one list of the library's.
struct Widths {
  int count = 0;
  double mean = 0.0;
  double median = 0.0;
};

Widths WidthsOf(std::vector<StarMeasurement> const& stars, COrbImage& image) {
  PSF profile(&image);
  for (StarMeasurement const& star : stars) {
    if (star.width > 0.0) profile.Add(PixelOf(star.at));
  }
  Widths widths{profile.GetCount(), 0.0, 0.0};
  if (profile.GetMeanFWHM(&widths.mean) == 0) widths.mean = 0.0;
  if (profile.GetMedianFWHM(&widths.median) == 0) widths.median = 0.0;
  return widths;
}

std::string WidthText(StarMeasurement const& star) {
  if (star.isRing) return "ring";
  return star.width > 0.0 ? fmt::format("{:.3f}", star.width) : "-";
}

Report ReportStars(std::string const& file, std::vector<StarMeasurement> const& stars, Widths const& widths) {
  auto const rings = std::count_if(stars.begin(), stars.end(), [](StarMeasurement const& s) { return s.isRing; });
  Report report;
  report.text = fmt::format(
      "# {}: {} stars, {} with a width, mean {:.3f}, median {:.3f} pixels; {} rings\n"
      "#      x          y   width  spread  extent pixels           net       error           sky\n",
      file, stars.size(), widths.count, widths.mean, widths.median, rings);
  Json list = Json::array();
  for (StarMeasurement const& s : stars) {
    report.text +=
        fmt::format("{:10.3f} {:10.3f} {:>7} {:7.3f} {:7.3f} {:6} {:13.6g} {:11.4g} {:13.6g}\n", s.at.x, s.at.y,
                    WidthText(s), s.spread, s.extent, s.count.pixels, s.count.net, s.count.error, s.count.sky);
    list.push_back(Json{{"x", s.at.x},
                        {"y", s.at.y},
                        {"width", s.width > 0.0 ? Json(s.width) : Json(nullptr)},
                        {"ring", s.isRing},
                        {"spread", Number(s.spread)},
                        {"extent", Number(s.extent)},
                        {"pixels", s.count.pixels},
                        {"net", Number(s.count.net)},
                        {"error", Number(s.count.error)},
                        {"sky", Number(s.count.sky)}});
  }
  report.json = Json{{"file", file},
                     {"with_width", widths.count},
                     {"mean_width", widths.mean},
                     {"median_width", widths.median},
                     {"rings", rings},
                     {"stars", list}};
  return report;
}

void AddStars(CLI::App& group, CommandContext& context) {
  auto options = std::make_shared<StarsOptions>();
  CLI::App* command = group.add_subcommand("stars", "Width and light of stars; those out of focus are told apart");
  AddMeasureOptions(*command, options->common);
  AddPositionOptions(*command, options->positions);
  command->add_option("--reach", options->reach, "How far around a star its light is looked for, pixels (default: 6)")
      ->check(NumberBetween(2.0, 200.0));
  command->callback([options, &context] {
    context.run = [options, &context] {
      options->positions.finder.aperture = options->reach;
      ReportFiles(options->common, context, [&](std::string const& file, COrbImage& image) {
        std::vector<Position> const positions = FindPositions(options->positions, file, image);
        StarMeter meter(image, options->reach);
        std::vector<StarMeasurement> stars;
        for (Position const& at : positions) stars.push_back(meter.Measure(at));
        return ReportStars(file, stars, WidthsOf(stars, image));
      });
    };
  });
}

// ---- Apertures

struct ApertureOptions {
  MeasureOptions common;
  PositionOptions positions;
  ApertureRadii radii;
  std::vector<double> ring;
  std::string sky = "clipped";
};

Report ReportApertures(std::string const& file, std::vector<Position> const& positions, ApertureOptions const& options,
                       COrbImage const& image) {
  ApertureCounter counter(image);
  Report report;
  report.text = fmt::format(
      "# {}: disk {:g}, ring {:g} to {:g} pixels\n"
      "#      x          y pixels           sum           sky       noise           net       error\n",
      file, options.radii.disk, options.radii.inner, options.radii.outer);
  Json list = Json::array();
  for (Position const& at : positions) {
    ApertureCount const c =
        counter.Count(at, options.radii, options.sky == "mean" ? RingSky::kMean : RingSky::kClipped);
    report.text += fmt::format("{:10.3f} {:10.3f} {:6} {:13.8g} {:13.8g} {:11.4g} {:13.8g} {:11.4g}\n", at.x, at.y,
                               c.pixels, c.sum, c.sky, c.skyNoise, c.net, c.error);
    list.push_back(Json{{"x", at.x},
                        {"y", at.y},
                        {"pixels", c.pixels},
                        {"sum", Number(c.sum)},
                        {"sky_pixels", c.skyPixels},
                        {"sky", Number(c.sky)},
                        {"sky_noise", Number(c.skyNoise)},
                        {"net", Number(c.net)},
                        {"error", Number(c.error)}});
  }
  report.json = Json{{"file", file}, {"apertures", list}};
  return report;
}

void CheckRadii(ApertureOptions& options) {
  if (!options.ring.empty()) {
    options.radii.inner = options.ring[0];
    options.radii.outer = options.ring[1];
  }
  if (options.radii.inner < options.radii.outer) return;
  throw HostError(Exit::kUsage, fmt::format("--ring: {:g} {:g} has no width; give the smaller radius first",
                                            options.radii.inner, options.radii.outer));
}

void AddAperture(CLI::App& group, CommandContext& context) {
  auto options = std::make_shared<ApertureOptions>();
  CLI::App* command = group.add_subcommand("aperture", "Sums in disks, less the sky in rings around them (plane 0)");
  AddMeasureOptions(*command, options->common);
  AddPositionOptions(*command, options->positions);
  // The library's largest aperture.
  command->add_option("--disk", options->radii.disk, "Radius of the disk, pixels (default: 6)")
      ->check(NumberBetween(0.0, 302.0));
  command->add_option("--ring", options->ring, "Inner and outer radius of the ring, pixels (default: 10 15)")
      ->type_name("INNER OUTER")
      ->expected(2)
      ->check(NumberBetween(0.0, 302.0));
  command
      ->add_option("--sky", options->sky,
                   "The ring's median without what lies 3 deviations off (clipped, default), or its plain mean")
      ->check(CLI::IsMember({"clipped", "mean"}));
  command->callback([options, &context] {
    context.run = [options, &context] {
      CheckRadii(*options);
      ReportFiles(options->common, context, [&](std::string const& file, COrbImage& image) {
        return ReportApertures(file, FindPositions(options->positions, file, image), *options, image);
      });
    };
  });
}

// ---- Regions and sky

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
    planes.push_back(Json{{"max", Number(maximum[p])},
                          {"min", Number(minimum[p])},
                          {"mean", Number(mean[p])},
                          {"deviation", Number(deviation[p])},
                          {"median", Number(median[p])}});
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

void AddMeasureCommand(CLI::App& app, CommandContext& context) {
  CLI::App* group = app.add_subcommand("measure", "Measure stars, apertures, rectangles and the sky");
  group->require_subcommand(1);
  AddStars(*group, context);
  AddAperture(*group, context);
  AddOfRegion(*group, "region", "Extremes, mean, deviation and median of a rectangle", ReportRegion, context);
  AddOfRegion(*group, "sky", "Level and noise of the sky, whatever stars stand on it", ReportSky, context);
}

}  // namespace orb::host
