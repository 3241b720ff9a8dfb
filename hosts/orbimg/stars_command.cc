// orbimg stars: the stars of frames, as a table.
#include <memory>

#include <fmt/format.h>
#include <hosts/orbimg/command.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/image_file.h>
#include <hosts/orbimg/star_finder.h>
#include <nlohmann/json.hpp>

namespace orb::host {
namespace {

using Json = nlohmann::ordered_json;

struct StarsOptions {
  std::vector<std::string> files;
  StarFinderSettings settings;
  double saturation = 0.0;
  bool json = false;
  bool mosaic = false;
};

std::vector<Star> FindStarsOf(std::string const& file, StarFinderSettings const& settings, ReadOptions const& reading) {
  Frame frame;
  ReadFrameFile(file, frame, reading);
  std::vector<Star> stars = FindStars(frame.image, settings);
  if (!stars.empty()) return stars;
  throw HostError(Exit::kFailed,
                  fmt::format("{}: no stars above {} times the noise; lower --threshold or look at the frame", file,
                              settings.threshold));
}

std::string Format(std::string const& file, std::vector<Star> const& stars) {
  std::string text = fmt::format("# {}: {} stars\n#      x          y        peak          flux\n", file, stars.size());
  for (Star const& star : stars) {
    text += fmt::format("{:10.3f} {:10.3f} {:11.2f} {:13.2f}\n", star.x, star.y, star.peak, star.flux);
  }
  return text;
}

Json ToJson(std::string const& file, std::vector<Star> const& stars) {
  Json list = Json::array();
  for (Star const& star : stars) {
    list.push_back(Json{{"x", star.x}, {"y", star.y}, {"peak", star.peak}, {"flux", star.flux}});
  }
  return Json{{"file", file}, {"stars", list}};
}

void RunStars(StarsOptions const& options, CommandContext& context) {
  StarFinderSettings settings = options.settings;
  if (options.saturation > 0.0) settings.saturation = options.saturation;
  Json all = Json::array();
  for (std::string const& file : ExpandFiles(options.files, FileOrder::kNatural)) {
    std::vector<Star> const stars = FindStarsOf(file, settings, {options.mosaic});
    if (options.json) {
      all.push_back(ToJson(file, stars));
    } else {
      context.out << Format(file, stars);
    }
  }
  if (options.json) context.out << all.dump(2) << '\n';
}

}  // namespace

void AddStarsCommand(CLI::App& app, CommandContext& context) {
  auto options = std::make_shared<StarsOptions>();
  StarFinderSettings& settings = options->settings;
  CLI::App* command = app.add_subcommand("stars", "Find stars: position, peak and flux, the brightest first");
  command->footer("Example: orbimg stars stack.fits --json");
  command->add_option("files", options->files, "Frames: FITS, TIFF, PNG, BMP or camera raw")->required();
  command
      ->add_option("--threshold", settings.threshold,
                   "How far a star stands above the sky, in units of its noise (default: 5)")
      ->check(NumberBetween(1.0, 1e6));
  command->add_option("--radius", settings.radius, "Half the side of the square of the centroid, pixels (default: 5)")
      ->check(CLI::Range(1, 100));
  command->add_option("--aperture", settings.aperture, "Radius of the circle of the flux, pixels (default: 6)")
      ->check(NumberBetween(1.0, 200.0));
  command->add_option("--saturation", options->saturation, "Leave out stars with a sample at or above this")
      ->check(NumberBetween(1e-30, 1e30));
  command->add_option("--max", settings.maxStars, "Only the brightest so many (default: all)")
      ->check(CLI::Range(1, 10000000));
  command->add_flag("--json", options->json, "Print JSON");
  AddMosaicOption(*command, options->mosaic);
  command->callback([options, &context] { context.run = [options, &context] { RunStars(*options, context); }; });
}

}  // namespace orb::host
