// Plain transcription of the median of registered frames, pixel by pixel.
#pragma once

#include <vector>

#include <orbimg/orbimg.h>

namespace orb::test::reference {

struct RegisteredFrame {
  COrbImage* image;
  double dx;
  double dy;
  double angle;
};

// One line of the destination.
void MedianLine(COrbImage& destination, std::vector<RegisteredFrame> const& frames, int y);

}  // namespace orb::test::reference
