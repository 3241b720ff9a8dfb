// How the files of a composition lie over each other.
#pragma once

#include <string>
#include <vector>

#include <hosts/orbimg/align_job.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/frame_transform.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

namespace orb::host {

struct PlacementOptions {
  bool align = false;
  std::string file;  // an alignment file
  std::string method = "stars";
  std::vector<double> start;  // empty, or about how far the images lie to the right and downwards
  StarFinderSettings finder;
  MatchAlignmentSettings matching;

  bool IsGiven() const { return align || !file.empty(); }
};

// Adds --align, --alignment, and what shapes the first. With a start, stars count only where the images then overlap:
// the brightest stars of tiles that share little else have nothing to do with each other.
void AddPlacementOptions(CLI::App& command, PlacementOptions& options);

// An image with the file that it came from.
struct PlacedImage {
  std::string file;
  COrbImage* image = nullptr;
};

// The transform of each image over the first, found from the images or taken from the file; without options nothing
// moves. The images may differ in size and planes. HostError names the one that cannot be placed. In a file all
// transforms are over its reference, which the first image must be.
std::vector<FrameTransform> PlaceImages(PlacementOptions const& options, std::vector<PlacedImage> const& images,
                                        Environment& environment);

// dx, dy, angle and centre.
nlohmann::ordered_json ToJson(FrameTransform const& transform);

}  // namespace orb::host
