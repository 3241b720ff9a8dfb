// The packed spectrum of a real image of nx x ny points, both powers of two; h = nx/2, H = ny/2.
//
// Two passes of real line transforms leave cosines and sines of both axes side by side (the row-and-column form). The
// packed spectrum S has a complex number for each frequency instead, in the same nx x ny floats:
//
//   rows 0 and H      a packed line spectrum along x each: the lines whose transform along y is real
//   columns 0 and h   a packed line spectrum along y each: real part at S[r][column], imaginary at S[H + r][column]
//   all others        for c = 1 .. h - 1, r = 1 .. H - 1: at frequency (c, +r) real part S[r][c], imaginary S[r][h +
//   c];
//                     at (c, -r) real part S[ny - r][c], imaginary S[ny - r][h + c]
//
// A line (one axis of a single point) is its own packed spectrum.
#pragma once

#include <platform/export.h>

// In place: from row-and-column form to packed spectrum where `direction` is not negative, back where it is. Needs no
// scratch memory and returns 0.
ORBIMG_API int SpectrumPack(float* s, int log2x, int log2y, int direction);

// out = a b as complex numbers; with a negative direction out = a conj(b). The purely real terms, the four corners
// (0, 0), (0, h), (H, 0), (H, h), multiply as reals in both directions. `out` may be `a`. Needs no scratch memory.
ORBIMG_API void SpectrumMultiply(float* out, float const* a, float const* b, int log2x, int log2y, int direction);
