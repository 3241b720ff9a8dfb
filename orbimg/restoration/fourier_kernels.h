// The radix 2 transform of kFourierLanes lines at once, with the bits of one line alone.
//
// Value t of line l has its real part at [(2 t) * kFourierLanes + l] and its imaginary part at
// [(2 t + 1) * kFourierLanes + l]: neighbouring lines are neighbours in memory, and each step does the same to all.
#pragma once

#include <cstddef>

namespace orb {

inline constexpr std::ptrdiff_t kFourierLanes = 32;
inline constexpr std::ptrdiff_t kFourierValue = 2 * kFourierLanes;  // floats of one value of all lines

struct FourierLines {
  std::ptrdiff_t length;  // a power of two
  int log2Length;
  float const* twiddles;  // for `length` points
  bool isInverse;
  float* block;  // length * kFourierValue floats
};

// From rows, `stride` floats apart, to the block in the order that the butterflies want; and back, in plain order.
void LoadRows(FourierLines const& lines, float const* rows, std::ptrdiff_t stride);
void StoreRows(FourierLines const& lines, float* rows, std::ptrdiff_t stride);
// The same for neighbouring columns of rows that lie `stride` floats apart.
void LoadColumns(FourierLines const& lines, float const* columns, std::ptrdiff_t stride);
void StoreColumns(FourierLines const& lines, float* columns, std::ptrdiff_t stride);

// All passes, and the division by sqrt(n).
void TransformBlock(FourierLines const& lines);

}  // namespace orb
