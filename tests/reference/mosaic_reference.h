// Plain transcription of the mosaic, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

struct MosaicArguments {
  int ox = 0;
  int oy = 0;
  double dx = 0.0;
  double dy = 0.0;
  double angle = 0.0;
  int mode = 0;
  float key[3] = {0.0f, 0.0f, 0.0f};
  float outside = 0.0f;
  int to256 = 0;
  int average = 0;
};

void Mosaic(COrbImage& canvas, COrbImage& first, COrbImage& second, MosaicArguments const& arguments, CRect* rect);

}  // namespace orb::test::reference
