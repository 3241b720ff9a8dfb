// The numbers of the mosaic's overlap modes.
#pragma once

namespace orb {

enum MosaicMode {
  kOverwrite = 0,
  kKeyed = 1,
  kLighter = 2,
  kDarker = 3,
};

}  // namespace orb
