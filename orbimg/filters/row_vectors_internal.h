// Neighbouring columns of a row as one value, for kernels that hold several of them in registers.
#pragma once

#include <cstddef>
#include <cstring>

namespace orb {

inline constexpr std::ptrdiff_t kLanes = 8;
using Doubles = double __attribute__((vector_size(64)));
using Floats = float __attribute__((vector_size(32)));

// Calls block(first column) for as many columns each as a block has, the last one moved back so that it ends with the
// row: its first columns are computed twice, to the same values. Calls single(column) where the row is shorter.
template <std::ptrdiff_t kColumns, typename Block, typename Single>
[[gnu::always_inline]] inline void EachColumnBlock(std::ptrdiff_t count, Block block, Single single) {
  if (count < kColumns) {
    for (std::ptrdiff_t x = 0; x < count; ++x) single(x);
    return;
  }
  std::ptrdiff_t x = 0;
  for (; x + kColumns <= count; x += kColumns) block(x);
  if (x < count) block(count - kColumns);
}

}  // namespace orb
