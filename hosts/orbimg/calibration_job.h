// Calibrates lights with darks and flats, from files into a folder.
#pragma once

#include <string>
#include <vector>

#include <hosts/orbimg/environment.h>

namespace orb::host {

struct CalibrationJob {
  std::vector<std::string> lights;
  std::vector<std::string> darks;
  std::vector<std::string> flats;
  std::vector<std::string> flatDarks;
  bool skyFlat = false;  // the flat is the pixel median of the lights themselves, less the dark
  std::string folder;
  std::string saveDark;  // files for the combined frames; empty: not kept
  std::string saveFlat;
};

// Everything is checked before the first light is worked on. Many darks or flats become one by their pixel median;
// flats and the lights of a sky flat are brought to one brightness before. Holds the dark, the flat and a frame for
// each thread. Returns the files written, in the order of the lights.
std::vector<std::string> CalibrateToFolder(CalibrationJob const& job, Environment& environment);

}  // namespace orb::host
