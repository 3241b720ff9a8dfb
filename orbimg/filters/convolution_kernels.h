// Row work of convolutions: taps outside, columns inside, so that every column gets its sum in the order of the taps.
#pragma once

#include <cstddef>

namespace orb {

// A tap of a row of results: column x takes weight * samples[x].
struct Tap {
  double weight;  // of 29 significant bits at most, so that its product with a float is exact
  float const* samples;
};

// out[x] = the sum over the taps, a double rounded once at the end. `out` overlaps no samples.
void SumTapsRow(Tap const* taps, std::size_t tapCount, std::ptrdiff_t count, double* out);
void SumTapsRow(Tap const* taps, std::size_t tapCount, std::ptrdiff_t count, float* out);

// The same sum kept as a float after each term.
void SumTapsNarrowRow(Tap const* taps, std::size_t tapCount, std::ptrdiff_t count, float* out);

// Samples at or below `lo` become lo, those at or above `hi` hi. `out` may be `samples`.
void ClipRow(float const* samples, std::ptrdiff_t count, float lo, float hi, float* out);

// out[x] = factors[0] * sums[x] + factors[1] * (sums[x - 1] + sums[x + 1]) + ... up to factors[radius]
void FoldRow(double const* sums, double const* factors, int radius, std::ptrdiff_t count, float* out);

}  // namespace orb
