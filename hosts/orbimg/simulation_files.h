// A simulated night as files: raw frames, and what is true of them.
#pragma once

#include <string>
#include <vector>

#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/simulation.h>

namespace orb::host {

struct SimulationJob {
  SimulationSettings settings;
  int darks = 8;
  int flats = 8;  // and as many flat darks
  std::string folder;
};

// Writes light_001.fits ..., dark_001.fits ..., flat_001.fits ..., flatdark_001.fits ... and truth.json.
void SimulateToFolder(SimulationJob const& job, Environment& environment);

// The truth as JSON: stars, hot pixels, the trail, and for each light its file, transform and cosmic rays.
std::string FormatTruth(Simulation const& simulation, std::vector<std::string> const& lights);
SimulationTruth ReadTruth(std::string const& path);

}  // namespace orb::host
