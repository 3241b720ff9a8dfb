// The dark calibration of the library on some rows of one plane.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::host {

// COrbImage::DarkClbrtn on the rows top .. top + rows - 1 of a plane, as wide as the dark. A mono dark serves all
// planes.
void SubtractDarkRows(COrbImage& dark, int plane, int top, int rows, float* samples);

}  // namespace orb::host
