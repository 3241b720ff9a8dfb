// What the star enhance filter and the nebula smoother share: how strong an edge is, and what counts as strong.
#pragma once

#include <orbimg/core/orb_image.h>
#include <orbimg/filters/row_convolution_internal.h>

namespace orb {

// 256/255: a threshold of 1.0 is one step of 255 beyond the level range.
inline constexpr double kStepsPerRange = 1.003921568627451;

inline double EdgeThreshold(COrbImage const& source, int plane, double threshold) {
  return source.GetLevelRange(plane) * threshold * kStepsPerRange;
}

// 8 c - the 8 samples around it.
inline RowConvolution EdgeConvolution(int windowRadius, int width) {
  constexpr float kWeights[] = {-1, -1, -1, -1, 8, -1, -1, -1, -1};
  return RowConvolution(CFilterKernel(1, kWeights, 9), windowRadius, width);
}

}  // namespace orb
