// Finds how each of many frames lies over a reference.
#pragma once

#include <string>
#include <vector>

#include <hosts/orbimg/alignment.h>
#include <hosts/orbimg/alignment_file.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/match_alignment.h>

namespace orb::host {

struct AlignJob {
  std::vector<std::string> files;
  std::string reference;  // empty: the first file; otherwise added to the files if it is not among them
  bool byMatching = false;
  StarFinderSettings finder;
  StarAlignmentSettings stars;
  MatchAlignmentSettings matching;
};

// Frames that cannot be aligned are named with the reason, and the rest goes on. HostError if that leaves the reference
// alone. Holds the reference and a frame for each thread.
AlignmentList AlignFrames(AlignJob const& job, Environment& environment);

}  // namespace orb::host
