#include <hosts/orbimg/measured_positions.h>

#include <fmt/format.h>
#include <hosts/io/host_error.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/star_table.h>

namespace orb::host {
namespace {

constexpr double kHalfPixel = 0.5;

void RequireInside(Position const& at, std::string const& origin, COrbImage const& image) {
  if (at.x >= -kHalfPixel && at.y >= -kHalfPixel && at.x < image.GetWidth() - kHalfPixel &&
      at.y < image.GetHeight() - kHalfPixel) {
    return;
  }
  throw HostError(Exit::kUsage, fmt::format("{}: {:g} {:g} lies off the image of {} x {}", origin, at.x, at.y,
                                            image.GetWidth(), image.GetHeight()));
}

std::vector<Position> FindAll(PositionOptions const& options, std::string const& file, COrbImage const& image) {
  StarFinderSettings settings = options.finder;
  if (options.saturation > 0.0) settings.saturation = options.saturation;
  std::vector<Position> const found = PositionsOf(FindStars(image, settings));
  if (!found.empty()) return found;
  throw HostError(
      Exit::kFailed,
      fmt::format("{}: no stars above {} times the noise; lower --threshold, or say where with --at or --stars", file,
                  settings.threshold));
}

}  // namespace

void AddPositionOptions(CLI::App& command, PositionOptions& options) {
  CLI::Option* const at = command
                              .add_option("--at", options.at,
                                          "Where to measure, pixels; middles of pixels are whole numbers, row 0 is on "
                                          "top; repeatable")
                              ->type_size(2)
                              ->type_name("X Y")
                              ->expected(1, CLI::detail::expected_max_vector_size)
                              ->allow_extra_args(false);
  command.add_option("--stars", options.table, "Measure at the stars of a table that orbimg stars --json printed")
      ->excludes(at);
  StarFinderSettings& finder = options.finder;
  command
      .add_option("--threshold", finder.threshold,
                  "Without --at and --stars: find stars this far above the sky, in units of its noise (default: 5)")
      ->check(NumberBetween(1.0, 1e6));
  command.add_option("--radius", finder.radius, "Half the side of the square of the centroid, pixels (default: 5)")
      ->check(CLI::Range(1, 100));
  command.add_option("--saturation", options.saturation, "Leave out stars with a sample at or above this")
      ->check(NumberBetween(1e-30, 1e30));
  command.add_option("--max", finder.maxStars, "Only the brightest so many (default: all)")
      ->check(CLI::Range(1, 10000000));
}

std::vector<Position> FindPositions(PositionOptions const& options, std::string const& file, COrbImage const& image) {
  std::vector<Position> positions;
  std::string origin = "--at";
  for (std::size_t i = 0; i + 1 < options.at.size(); i += 2) positions.push_back({options.at[i], options.at[i + 1]});
  if (!options.table.empty()) {
    positions = PositionsOf(ReadStarTable(options.table, file));
    origin = options.table;
  }
  if (positions.empty()) return FindAll(options, file, image);
  for (Position const& each : positions) RequireInside(each, origin, image);
  return positions;
}

}  // namespace orb::host
