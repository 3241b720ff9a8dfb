// orbimg measure: widths and light of stars, apertures, rectangles and the sky, as tables.
#include <cmath>

#include <hosts/orbimg/measure_report.h>

namespace orb::host {

void AddMeasureOptions(CLI::App& command, MeasureOptions& options) {
  command.add_option("files", options.files, "Frames: FITS, TIFF, PNG, BMP or camera raw")->required();
  command.add_flag("--json", options.json, "Print JSON");
  AddMosaicOption(command, options.mosaic);
}

Json FiniteOrNull(double v) { return std::isfinite(v) ? Json(v) : Json(nullptr); }

void AddMeasureCommand(CLI::App& app, CommandContext& context) {
  CLI::App* group = app.add_subcommand("measure", "Measure stars, apertures, rectangles and the sky");
  group->require_subcommand(1);
  AddMeasureStars(*group, context);
  AddMeasureAperture(*group, context);
  AddMeasureRegion(*group, context);
  AddMeasureSky(*group, context);
}

}  // namespace orb::host
