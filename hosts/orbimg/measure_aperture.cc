// orbimg measure aperture: sums in disks, less the sky in rings.
#include <memory>

#include <fmt/format.h>
#include <hosts/orbimg/aperture_measurement.h>
#include <hosts/orbimg/measure_report.h>
#include <hosts/orbimg/measured_positions.h>

namespace orb::host {
namespace {

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
                        {"sum", FiniteOrNull(c.sum)},
                        {"sky_pixels", c.skyPixels},
                        {"sky", FiniteOrNull(c.sky)},
                        {"sky_noise", FiniteOrNull(c.skyNoise)},
                        {"net", FiniteOrNull(c.net)},
                        {"error", FiniteOrNull(c.error)}});
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

}  // namespace

void AddMeasureAperture(CLI::App& group, CommandContext& context) {
  auto options = std::make_shared<ApertureOptions>();
  CLI::App* command = group.add_subcommand("aperture", "Sums in disks, less the sky in rings around them (plane 0)");
  command->footer("Example: orbimg measure aperture stack.fits --disk 6 --ring 10 15 --json");
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

}  // namespace orb::host
