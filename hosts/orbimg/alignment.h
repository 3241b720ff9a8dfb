// Lays frames over a reference.
//
// Two matched stars far apart become the standard points of both images, and COrbImage::GetFitPrm gives shift and
// angle. Its angle is rounded down to a tenth of a degree, which is a pixel at the edge of a frame of 1100 pixels; so
// shift and angle are refined by least squares over all matched stars. The result goes to the operators as it stands:
// dx, dy, angle, and (cx, cy) as the frame's stdCtr.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <hosts/orbimg/frame_transform.h>
#include <hosts/orbimg/star_finder.h>
#include <hosts/orbimg/triangle_match.h>
#include <orbimg/orbimg.h>

namespace orb::host {

enum class AlignmentMethod { kTwoStars, kAllStars, kMatch };

// "two stars", "all stars", "match"
char const* NameOf(AlignmentMethod method);

struct Alignment {
  FrameTransform transform;
  AlignmentMethod method = AlignmentMethod::kAllStars;
  int starsMatched = 0;
  std::optional<double>
      rms;  // pixels: root of the mean squared distance of the matched stars, where stars were matched
};

// An alignment, or the reason why there is none: half a sentence that a file name goes before.
struct AlignmentOutcome {
  std::optional<Alignment> alignment;
  std::string reason;
};

struct StarAlignmentSettings {
  TriangleMatchSettings match;
  bool refine = true;  // false: the two-star fit of the library as it is
};

// The star lists are FindStars of the images. Leaves the two standard points on both images, and the result's centre on
// the frame: the first star for two stars, the middle of the frame for all. An angle that does not exceed three times
// its own standard error is taken as none, which keeps plain shifts plain.
AlignmentOutcome AlignByStars(COrbImage& reference, std::vector<Star> const& referenceStars, COrbImage& frame,
                              std::vector<Star> const& frameStars, StarAlignmentSettings const& settings);

}  // namespace orb::host
