// Colour images out of several: what orbimg compose does.
#pragma once

#include <string>
#include <vector>

#include <hosts/catalogue/operator_entry.h>
#include <hosts/io/fits_file.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/placement.h>

namespace orb::host {

struct CompositionJob {
  OperatorEntry const* entry = nullptr;  // of three planes, with a name for each of its frames
  std::vector<std::string> files;        // one a frame
  std::vector<double> values;            // one a parameter of the operator
  // One list a frame: a value for each of its parameters. "dx", "dy" and "angle" come from the placement instead.
  std::vector<std::vector<double>> frameValues;
  PlacementOptions placement;
};

struct Composition {
  Frame frame;
  std::vector<FrameTransform> transforms;  // how each image lies over the first
};

// The result has the size and the header of the first image, and the others lie over it. Its planes have the levels
// that the operator gives them. HostError before any work if something is wrong. Holds all images and the result.
void Compose(CompositionJob const& job, Environment& environment, Composition& result);

}  // namespace orb::host
