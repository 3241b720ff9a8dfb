// Which columns of a line of the result a frame covers.
#pragma once

#include <hosts/io/fits_file.h>
#include <hosts/orbimg/frame_transform.h>

namespace orb::host {

struct ColumnRange {
  int begin = 0;
  int end = 0;
};

// Where the sampler of the library reads from the frame at all: 0 <= x < width and 0 <= y < height of the position
// there, as real numbers. Along a line that is one stretch.
ColumnRange FindCoveredColumns(RigidMap const& map, Shape const& frame, int y, int width);

}  // namespace orb::host
