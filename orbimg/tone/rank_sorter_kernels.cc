#include <orbimg/tone/rank_sorter_kernels.h>

#include <algorithm>

#include <orbimg/core/row_kernel.h>

namespace orb {

ORB_ROW_KERNEL KeyRange RangeOfKeys(std::uint64_t const* keys, std::ptrdiff_t count) {
  std::uint64_t least = keys[0];
  std::uint64_t most = keys[0];
  for (std::ptrdiff_t i = 1; i < count; ++i) {
    least = std::min(least, keys[i]);
    most = std::max(most, keys[i]);
  }
  return {least, most};
}

}  // namespace orb
