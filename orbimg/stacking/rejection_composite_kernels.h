// Rows of the rejection composite that no column shares with another: the plain choice, and the largest samples of the
// windows, found tap by tap for all columns of a row.
#pragma once

#include <cstddef>

#include <orbimg/core/level.h>

namespace orb {

// result = second * ratio where a is not below it, otherwise a. `result` may be a.
void LowerRow(double const* a, float const* second, double ratio, std::ptrdiff_t count, double* result);

// The samples, on the 256-scale of `level` if `is256`.
void ConvertRow(float const* samples, Level level, bool is256, std::ptrdiff_t count, double* values);

// largest = the larger of it and `values`; a value that is not a number is passed over.
void RaiseRow(double const* values, std::ptrdiff_t count, double* largest);

// The samples of the second source nearest to its position s of each pixel, moved by a tap. Intended: the position of
// the tap is rounded as pixel + tap + s - pixel + 0.5 in this order, and held in 0 .. last. NearestColumnsRow takes
// pixels from x on, NearestRowsRow the one y for all; its results count samples from the plane's first.
void NearestColumnsRow(double const* sx, int x, int tapX, int last, std::ptrdiff_t count, int* columns);
void NearestRowsRow(double const* sy, int y, int tapY, int last, int width, std::ptrdiff_t count,
                    std::ptrdiff_t* rowOffsets);

// RaiseRow with the samples of a plane at rowOffsets + columns. A value is rounded to float, as the sampler of single
// values rounds.
void RaiseToNearestRow(float const* plane, std::ptrdiff_t const* rowOffsets, int const* columns, Level level,
                       bool is256, std::ptrdiff_t count, double* largest);

}  // namespace orb
