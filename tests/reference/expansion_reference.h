// Plain transcription of the map of a planet, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

struct ExpansionArguments {
  double cx = 0.0;
  double cy = 0.0;
  double radius = 1.0;
  double tiltY = 0.0;
  double tiltX = 0.0;
  double flattening = 1.0;
  int grid = 0;
};

void Expansion(COrbImage& map, COrbImage& src, ExpansionArguments const& arguments, CRect* rect);

}  // namespace orb::test::reference
