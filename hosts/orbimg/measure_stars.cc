// orbimg measure stars: width, spread and light.
#include <algorithm>
#include <memory>

#include <fmt/format.h>
#include <hosts/orbimg/measure_report.h>
#include <hosts/orbimg/measured_positions.h>
#include <hosts/orbimg/star_measurement.h>

namespace orb::host {
namespace {

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
                        {"spread", FiniteOrNull(s.spread)},
                        {"extent", FiniteOrNull(s.extent)},
                        {"pixels", s.count.pixels},
                        {"net", FiniteOrNull(s.count.net)},
                        {"error", FiniteOrNull(s.count.error)},
                        {"sky", FiniteOrNull(s.count.sky)}});
  }
  report.json = Json{{"file", file},
                     {"with_width", widths.count},
                     {"mean_width", widths.mean},
                     {"median_width", widths.median},
                     {"rings", rings},
                     {"stars", list}};
  return report;
}

}  // namespace

void AddMeasureStars(CLI::App& group, CommandContext& context) {
  auto options = std::make_shared<StarsOptions>();
  CLI::App* command = group.add_subcommand("stars", "Width and light of stars; those out of focus are told apart");
  command->footer("Example: orbimg measure stars stack.fits --json");
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

}  // namespace orb::host
