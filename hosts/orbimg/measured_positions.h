// Where a measurement looks: positions given on the command line, a table of stars, or the stars that are found.
#pragma once

#include <string>
#include <vector>

#include <hosts/orbimg/star_finder.h>
#include <CLI/CLI.hpp>

namespace orb::host {

struct PositionOptions {
  std::vector<double> at;  // x and y in turn
  std::string table;
  StarFinderSettings finder;
  double saturation = 0.0;
};

// --at and --stars; the settings of the finder besides.
void AddPositionOptions(CLI::App& command, PositionOptions& options);

// HostError where a position lies off the image, and where no star is found.
std::vector<Position> FindPositions(PositionOptions const& options, std::string const& file, COrbImage const& image);

}  // namespace orb::host
