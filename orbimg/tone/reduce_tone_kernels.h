// A row of the posteriser.
#pragma once

#include <cstddef>

#include <orbimg/core/level.h>
#include <platform/export.h>

namespace orb {

inline constexpr int kMostTones = 256;

// The tones of a plane.
//
// v = (s - min) / range * 255.0, limited to 0 to 255
// w = floor(n * v * (1 / 256)) / n * 255.0
// d = range * w * (1 / 255) + min
//
// There are only n tones, so that a short form of d, step * (range / n) + min, can be tried on all of them. With most
// levels it gives the same samples, as its error of some bits of a double is lost when the sample is stored; where it
// does not for a single tone, IsShort is false, and the rows take the formula as it stands.
class ORBIMG_API ToneScale {
 public:
  // n is 1 to kMostTones.
  ToneScale(Level initLevel, int initN);

  bool IsShort() const { return isShort; }

  // A row of the plane. `dst` may be `src`.
  void ReduceRow(float const* src, float* dst, std::ptrdiff_t count) const;

 private:
  Level level;
  int n;
  double rawPerStep;
  bool isShort;
};

}  // namespace orb
