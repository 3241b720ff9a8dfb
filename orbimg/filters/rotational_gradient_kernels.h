// The rotational gradient of a row without angles: positions by one rotation of the plane instead of an arc tangent, a
// sine and a cosine each.
//
// Such a position is the plain formula's up to rounding, and nearly always leads to the same float. Where it may not,
// the column is left to the plain formula:
//
//   the position lies so near to a whole column or row that the other side of it may be meant,
//   or the result lies so near to the middle between two floats that it may round the other way.
//
// How near that is follows from bounds on the rounding errors of both ways, not from typical ones.
#pragma once

#include <cstddef>

#include <orbimg/filters/turned_sample_internal.h>

namespace orb {

// What is the same for all rows of a run.
struct GradientRun {
  // `gain` and the turn as they are; `farthest`: a bound for the distance of any sample's centre.
  GradientRun(Turn const& turn, double gain, int width, int height);

  // Whether rows can be had this way at all: the plane has two columns and rows, and positions are known to a small
  // part of a pixel.
  bool IsSound() const;

  Turn turn;
  double gain;
  double cosA;
  double sinA;
  double slack;  // bound for the difference of a position from the plain formula's, in pixels
  int width;
  int height;
};

// The gradient at columns left .. left + count - 1 of row y; `c` are the source's samples there. doubtful[x] becomes
// other than 0 where dst[x] is left to the plain formula. Returns whether there is any.
bool GradientRow(GradientRun const& run, float const* plane, int y, int left, float const* c, std::ptrdiff_t count,
                 float* dst, unsigned char* doubtful);

}  // namespace orb
