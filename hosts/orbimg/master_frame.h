// One dark or flat out of many: the pixel median of the frames as they lie.
#pragma once

#include <string>
#include <vector>

#include <hosts/io/fits_file.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/frame_set.h>

namespace orb::host {

struct MasterRecipe {
  std::string kind;           // for messages: "dark", "flat"
  COrbImage* dark = nullptr;  // taken from every frame first; may be null
  // Brings every frame to the median of the first by a factor before the median is taken, so that frames of different
  // brightness all count.
  bool equalize = false;
};

// One frame is taken as it is, less the dark. The header is the first frame's, with STACKCNT and HISTORY.
void MakeMaster(ReaderList const& readers, MasterRecipe const& recipe, Environment& environment, Frame& master);

}  // namespace orb::host
