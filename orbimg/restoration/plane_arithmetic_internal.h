// Element by element work on whole planes, in double, stored as floats.
#pragma once

#include <cstddef>

#include <platform/export.h>

namespace orb {

// Clears the pad of nx * ny, then copies w * h samples to the 1-based position (x0, y0), where they fit.
ORBIMG_API void PlaceInPad(float const* from, float* pad, int nx, int ny, int w, int h, int x0, int y0);
// The 1-based position of a centred window of `size` in `padded`.
inline int CentredPosition(int padded, int size) { return (padded - size) / 2 + 1; }
// The centred window of w * h samples.
ORBIMG_API void TakeFromPad(float const* pad, float* to, int nx, int ny, int w, int h);

struct Peak {
  float value;
  int x;
  int y;
};
// The largest value and its first place, by rows.
ORBIMG_API Peak FindPeak(float const* plane, int nx, int ny);
// `to` is `from`, turned about so that its element (x, y) comes first.
ORBIMG_API void ShiftToOrigin(float const* from, float* to, int nx, int ny, int x, int y);

// out[i] = a[i] op b[i]; out may be a or b.
ORBIMG_API void ArrayDivide(float const* a, float const* b, float* out, std::ptrdiff_t n);
ORBIMG_API void ArrayMultiply(float const* a, float const* b, float* out, std::ptrdiff_t n);
ORBIMG_API void ArraySubtract(float const* a, float const* b, float* out, std::ptrdiff_t n);

// n complex values, pairs of floats; out may be a or b.
ORBIMG_API void ComplexDivideByReal(float const* a, double divisor, float* out, std::ptrdiff_t n);
ORBIMG_API void ComplexMultiply(float const* a, float const* b, float* out, std::ptrdiff_t n);
// conj(a) b
ORBIMG_API void ComplexConjMultiply(float const* a, float const* b, float* out, std::ptrdiff_t n);

}  // namespace orb
