// Level: the two formulas between raw samples and the 256-scale, for row loops. ByteLevel: the way to a displayed byte.
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

// The 256-scale held in a byte: 0 where min >= raw, otherwise 255 where max <= raw, otherwise truncated.
struct ByteLevel {
  double min;
  double max;
  double range;

  // Intended: the test against the lower level comes first, so that equal or inverted levels give 0.
  unsigned char ToByte(double raw) const {
    if (min >= raw) return 0;
    if (max <= raw) return 255;
    double const v = (raw - min) / range * 255.0;
    // A value that is not a number, or levels of range 0, are beyond any byte; they must not reach the conversion.
    return v > 0.0 && v < 256.0 ? static_cast<unsigned char>(v) : static_cast<unsigned char>(0);
  }
};

inline ByteLevel ByteLevelOf(CImage const& image, int plane) {
  return ByteLevel{image.GetLevelMin(plane), image.GetLevelMax(plane), image.GetLevelRange(plane)};
}

// Brightness of three values on one scale, red first, summed in the order that a single sample's brightness takes.
inline double Brightness(double r, double g, double b) { return kBlueWeight * b + kGreenWeight * g + kRedWeight * r; }

}  // namespace orb
