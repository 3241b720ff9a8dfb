// Stacks frames from files into a file.
#pragma once

#include <string>
#include <vector>

#include <hosts/orbimg/alignment_file.h>
#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/stack_mode.h>

namespace orb::host {

struct StackJob {
  std::vector<AlignedFrame> frames;  // the first is the reference, whose transform moves nothing
  StackParameters parameters;
  std::string output;
};

// Everything is checked before the first sample is read. Memory stays within the environment's limit, whatever the
// number of frames.
void StackToFile(StackJob const& job, Environment& environment);

}  // namespace orb::host
