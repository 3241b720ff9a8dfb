// Two-dimensional complex transforms of real images, of any size, on FFTPACK.
//
//   forward:  S[v][u] = 1/(nx ny) sum over x, y of f[y][x] exp(-2 pi i (u x/nx + v y/ny))
//   inverse:  f[y][x] = real part of the sum over u, v of S[v][u] exp(+2 pi i (u x/nx + v y/ny))
//
// so the zero frequency of a spectrum is the mean, and one undoes the other. Spectra are complex, pairs of floats, rows
// one after the other, with all nx columns.
//
// Two rows of a real image share one complex line, and one half of the columns follows from the other by symmetry. The
// error of a value, as a fraction of its magnitude and the root mean square of all together, is at most
// 8e-7 sqrt(1 + log2(nx ny)) (1 + a(nx) + a(ny)), where a(n) is a hundredth of the largest prime factor of n if that is
// above 5, otherwise 0.
#pragma once

#include <vector>

#include <orbimg/core/orb_image.h>
#include <orbimg/restoration/fftpack_line.h>
#include <platform/export.h>

// Tables and lines of transforms of one size. One object serves one transform at a time. Memory: 6 (nx + ny) doubles of
// tables, and 16 columns of complex values. Lack of it is std::bad_alloc. Sizes are 1 or more.
struct ORBIMG_API FftTables {
  FftTables(int nx, int ny);

  orb::FftpackLine rowTable;
  orb::FftpackLine columnTable;
  std::vector<float> columnLine;  // a block of columns, or one row
};

// Returns 1, or 0 when `progress` says cancel; `out` is then half done. Percentages go from `percentFrom` to
// `percentTo` of `progress`, which may be null. `in` (nx * ny floats) may lie inside `out` (2 nx * ny floats).
ORBIMG_API int Fft2Forward(FftTables* t, float const* in, float* out, int nx, int ny, COrbImage* progress,
                           int percentFrom, int percentTo);

// `in` (2 nx * ny floats) is overwritten, and may be any spectrum: what would be imaginary in the result is dropped.
// `out` (nx * ny floats) lies outside of `in`. Returns as the forward direction does.
ORBIMG_API int Fft2Inverse(FftTables* t, float* in, float* out, int nx, int ny, COrbImage* progress, int percentFrom,
                           int percentTo);
