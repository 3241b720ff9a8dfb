// Plain transcription of the composite and of its rejection mode, sample by sample.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

struct CompositeArguments {
  double dx = 0.0;
  double dy = 0.0;
  double angle = 0.0;
  int mode = 0;
  double ratio = 0.5;
  int to256 = 0;
  int clamp = 0;
  double threshold = 0.95;
  int radius = 0;
};

void Composite(COrbImage& dst, COrbImage& first, COrbImage& second, CompositeArguments const& arguments, CRect* rect);

void RejectionComposite(COrbImage& dst, COrbImage& first, COrbImage& second, CompositeArguments const& arguments,
                        CRect* rect);

}  // namespace orb::test::reference
