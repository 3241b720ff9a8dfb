// Tone curves on the command line: from files of points, or by name.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include <hosts/catalogue/operator_entry.h>
#include <hosts/orbimg/tone_curve.h>
#include <CLI/CLI.hpp>

namespace orb::host {

struct CurveOptions {
  std::string file;
  std::string preset;
  std::optional<double> amount;
  std::array<std::string, 3> planeFiles;  // of red, green and blue
  int samples = 65536;
};

// For an operator whose tables are a master curve and one for each plane.
void AddCurveOptions(CLI::App& command, OperatorEntry const& entry, CurveOptions& options);

// The curves of one call.
struct CurveSet {
  ToneCurve master;
  std::array<ToneCurve, 3> planes;
  int samples = 0;
  bool hasPlanes = false;  // curves for single planes, which a mono image has not
  std::string text;        // for HISTORY cards

  std::vector<std::vector<float>> TablesFor(int imagePlanes) const;
};

// Curves that were not given are the straight line. HostError if there is none at all, or one is wrong.
CurveSet ReadCurves(CurveOptions const& options);

}  // namespace orb::host
