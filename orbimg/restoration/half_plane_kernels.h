// What the transform of real planes adds to that of complex lines: two real rows share a line, and of their spectra
// only the half is kept that the other mirrors.
//
// Blocks are those of fourier_kernels.h. The half of the spectrum of a row of n samples is n/2 values: frequencies 1 to
// n/2 - 1, and before them one value that holds the two real ones, frequency 0 as its real and n/2 as its imaginary
// part.
#pragma once

#include <cstddef>

#include <orbimg/restoration/fourier_kernels.h>

namespace orb {

// Two rows of samples a lane: row l is the real, row kFourierLanes + l the imaginary part of line l. To the block in
// the order that the butterflies want, and back from plain order.
void LoadRowPairs(FourierLines const& lines, float const* rows, std::ptrdiff_t stride);
void StoreRowPairs(FourierLines const& lines, float* rows, std::ptrdiff_t stride);

// In the block, from the spectrum of a + i b to half of that of a, in values 0, 1, 2 ..., and half of that of b, in
// values n, n - 1, n - 2 ...: the block has room for one value more than the lines are long.
void SplitSpectra(FourierLines const& lines);
// From halves of the spectra of a, in values 0, 1, 2 ... of `halves`, and of b, from value n/2 on, to the spectrum of
// a + i b in the block, in the order that the butterflies want.
void JoinSpectra(FourierLines const& lines, float const* halves);

// `count` values, `step` floats apart from `values` on, to rows, and back.
void StoreHalves(float const* values, std::ptrdiff_t step, std::ptrdiff_t count, float* rows, std::ptrdiff_t stride);
void LoadHalves(float const* rows, std::ptrdiff_t stride, std::ptrdiff_t count, float* values);

// Value v of every line times row v of `factors`, into `to`, in the order that the butterflies want.
void MultiplyLines(FourierLines const& lines, float const* factors, std::ptrdiff_t stride, float* to);

// The real parts of value v of every line to row v of `to`.
void StoreRealParts(FourierLines const& lines, float* to, std::ptrdiff_t stride);

// The largest of `count` squares, as floats; never less than 0.
float LargestSquare(float const* values, std::ptrdiff_t count);
// v/(v v + k)
void InvertRow(float* values, std::ptrdiff_t count, double k);

}  // namespace orb
