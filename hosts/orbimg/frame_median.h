// The median of a file's samples, in little memory.
#pragma once

#include <functional>

#include <hosts/io/fits_file.h>

namespace orb::host {

// Of the finite samples of plane 0, index n / 2 in ascending order; 0 if there are none. A large frame is represented
// by evenly spaced rows, so that 16 MiB are enough. `prepare` is done to the rows before they count; may be empty.
double FindFrameMedian(FrameReader& reader,
                       std::function<void(int plane, int top, int rows, float* samples)> const& prepare);

}  // namespace orb::host
