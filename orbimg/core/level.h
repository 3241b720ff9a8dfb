// Level: the two formulas between raw samples and the 256-scale, for row loops.
#pragma once

#include <orbimg/core/constants.h>
#include <orbimg/core/image.h>

namespace orb {

struct Level {
  double min;
  double range;

  double To256(double raw) const { return (raw - min) / range * 255.0; }
  double ToRaw(double v) const { return range * v * kInverse255 + min; }
};

inline Level LevelOf(CImage const& image, int plane) {
  return Level{image.GetLevelMin(plane), image.GetLevelRange(plane)};
}

// Brightness of three values on one scale, red first, summed in the order that a single sample's brightness takes.
inline double Brightness(double r, double g, double b) {
  return kBlueWeight * b + kGreenWeight * g + kRedWeight * r;
}

}  // namespace orb
