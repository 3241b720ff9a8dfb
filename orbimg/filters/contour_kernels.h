// Steps of brightness, and how often they change around a sample.
//
// A grid of 4 x 4 points lies around the sample, a third of a pixel apart, its last row and column on the sample. Every
// point reads the pixel that its place truncates to, so the grid sees four pixels at most: the sample, and its left,
// upper and upper left neighbours. Each of the nine cells between the points counts how many of its upper side, its
// lower side and its two diagonals join different steps. What a cell counts depends only on which pixels its corners
// see, and so the nine cells come down to a few comparisons with fixed weights.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <orbimg/core/level.h>

namespace orb {

struct StepScale {
  float most;    // number of steps, where they are held
  float factor;  // steps on the 256-scale
  bool isHeld;
};

// steps[x] = trunc(v * factor), held at 0 and `most` before it is truncated if that is wanted; v is the sample on the
// 256-scale, rounded to float.
void StepsOfPlaneRow(float const* samples, std::ptrdiff_t count, Level level, StepScale const& scale, float* steps);
// The same of the brightness of a colour.
void StepsOfColourRow(float const* r, float const* g, float const* b, std::ptrdiff_t count, Level const levels[3],
                      StepScale const& scale, float* steps);

// Of the three steps along one axis of the grid: how many lie on the neighbour before the sample, how many on the
// sample. Both are 1 or, where the third point falls just short of the sample, 2 and 0.
struct GridShare {
  float before;
  float on;
};

// For the sample at a coordinate.
GridShare GridShareAt(int coordinate);

// counts[x]: tests that join different steps, of all nine cells, 36 at most. `above` and `row` hold the steps of the
// upper row and the sample's own, from the left neighbour of the first sample on: count + 1 of them. `shares` are those
// of the columns, their parts apart.
void CountChangesRow(float const* above, float const* row, std::ptrdiff_t count, GridShare rowShare,
                     float const* columnsBefore, float const* columnsOn, float* counts);

// dst[x] = ToRaw(255 counts[x] * 0.11111111)
void DrawContourRow(float const* counts, std::ptrdiff_t count, Level level, float* dst);

}  // namespace orb
