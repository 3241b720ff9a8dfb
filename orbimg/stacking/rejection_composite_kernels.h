// Rows of the rejection composite that no column shares with another: the plain choice, and the largest samples of the
// windows, gathered tap by tap for all columns of a row.
#pragma once

#include <cstddef>

#include <orbimg/core/level.h>

namespace orb {

// A plane of the second source, and whether its samples count on the 256-scale.
struct WindowPlane {
  float const* samples;
  int width;
  int height;
  Level level;
  bool is256;
};

// result = second * ratio where a is not below it, otherwise a.
void LowerRow(double const* a, float const* second, double ratio, std::ptrdiff_t count, double* result);

// Lifts `largest` to the samples, brought to the 256-scale by `level` if `is256`.
void RaiseToFirstRow(float const* samples, Level level, bool is256, std::ptrdiff_t count, double* largest);

// Lifts `largest` to the samples nearest to (sx + tapX, sy + tapY), (sx, sy) being the source positions of the columns,
// the first of which is column x; tapX and tapY are taken in the destination, where rounding happens: x + tapX + sx -
// x. Positions off the plane are held at its edge. A value is rounded to float, as the sampler of single values rounds.
void RaiseToSecondRow(WindowPlane const& plane, double const* sx, double const* sy, int x, int y, int tapX, int tapY,
                      std::ptrdiff_t count, double* largest);

}  // namespace orb
