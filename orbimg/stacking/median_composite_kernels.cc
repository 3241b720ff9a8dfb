#include <orbimg/stacking/median_composite_kernels.h>

#include <orbimg/core/row_kernel.h>

namespace orb {

ORB_ROW_KERNEL void LoadKeyRows(std::span<float const* const> samples, std::ptrdiff_t begin, std::ptrdiff_t count,
                                KeyRow* rows) {
  for (float const* const row : samples) {
    std::int32_t* const key = *rows++;
    float const* const from = row + begin;
    if (count == kKeyColumns) {
      ORB_COLUMNS_INDEPENDENT
      for (int x = 0; x < kKeyColumns; ++x) key[x] = KeyOf(from[x]);
    } else {
      ORB_COLUMNS_INDEPENDENT
      for (std::ptrdiff_t x = 0; x < count; ++x) key[x] = KeyOf(from[x]);
    }
  }
}

ORB_ROW_KERNEL void FillGapsRow(std::ptrdiff_t count, std::int32_t* lows, std::int32_t* key) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    key[x] = lows[x] > 0 ? kLowestKey : kHighestKey;
    --lows[x];
  }
}

ORB_ROW_KERNEL void CountRow(std::ptrdiff_t count, std::int32_t* counts) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) ++counts[x];
}

}  // namespace orb
