// The alignment file: which frames belong together, and how each lies over the reference. JSON; the names of the frames
// are relative to the folder of the file.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <hosts/orbimg/frame_transform.h>

namespace orb::host {

struct AlignedFrame {
  std::string file;
  FrameTransform transform;
  std::string method;              // "reference", or how the transform was found
  int stars = 0;                   // that agreed
  std::optional<double> residual;  // root mean square over them, pixels; null in the file where there is none
};

struct LeftOutFrame {
  std::string file;
  std::string reason;
};

struct AlignmentList {
  std::string reference;
  std::vector<AlignedFrame> frames;  // the reference among them
  std::vector<LeftOutFrame> leftOut;
};

// The text of the file, if it is going to stand at `path`.
std::string FormatAlignment(AlignmentList const& list, std::string const& path);
AlignmentList ReadAlignment(std::string const& path);

}  // namespace orb::host
