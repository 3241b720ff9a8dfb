// Kernels for processors with 512-bit vectors, where HasWideVectors; each gives the bits of its plain twin. Sums over
// taps are taken for four neighbouring rows at once, so that a sample is fetched and widened once for all of them.
#pragma once

#include <cstddef>
#include <span>

namespace orb {

inline constexpr int kRowsAtOnce = 4;
inline constexpr std::ptrdiff_t kLeastColumns = 32;  // fewer columns are not taken

// Column x of row j takes weights[j] * samples[x].
struct FourRowTap {
  double weights[kRowsAtOnce];  // of 29 significant bits at most
  float const* samples;
};

// Taps that the rows first .. last take, and no other row.
struct FourRowTaps {
  int first;
  int last;
  std::span<FourRowTap const> taps;
};

bool HasWideVectors();

// SumTapsRow for four rows, lists in the order of the sum, for columns first .. first + count - 1 of the taps, which
// become columns 0 .. count - 1 of the sums. kLeastColumns or more.
void SumFourRows(std::span<FourRowTaps const> lists, std::ptrdiff_t first, std::ptrdiff_t count, double* const* out);
void SumFourRows(std::span<FourRowTaps const> lists, std::ptrdiff_t first, std::ptrdiff_t count, float* const* out);

// FoldRow, for kLeastColumns or more.
void FoldWideRow(double const* sums, double const* factors, int radius, std::ptrdiff_t count, float* out);

}  // namespace orb
