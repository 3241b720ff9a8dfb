// Brings frames to the sky and the noise of the first, and finds how much each is worth.
#pragma once

#include <string>
#include <vector>

#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/frame_set.h>

namespace orb::host {

// What is done to the samples of a frame, and its weight in a mean.
struct FrameScaling {
  std::vector<double> factors;  // of each plane: v becomes factor * v + offset
  std::vector<double> offsets;
  double weight = 1.0;

  bool IsIdle() const;  // factors 1, offsets 0
};

enum class Normalise {
  kNone,
  kSky,    // adds what brings the median of plane 0 to that of the first frame, to all planes
  kNoise,  // (v - sky) noise1 / noise + sky1, plane by plane, with sky and noise of the frame and of the first
};

enum class Weighting {
  kEqual,
  kNoise,  // 1 / noise^2, of the frame as it stands, the mean over its planes
};

// One scaling a frame. HostError names the frame whose noise is 0 where that is divided by, or what memory it takes
// to measure a frame where there is less.
std::vector<FrameScaling> FindScalings(ReaderList const& readers, Normalise normalise, Weighting weighting,
                                       Environment& environment);

}  // namespace orb::host
