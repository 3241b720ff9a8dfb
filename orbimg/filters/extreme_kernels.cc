#include <orbimg/filters/extreme_kernels.h>

#include <algorithm>

#include <orbimg/core/row_kernel.h>

namespace orb {

ORB_ROW_KERNEL void LesserKeysRow(std::int32_t const* a, std::int32_t const* b, std::ptrdiff_t count,
                                  std::int32_t* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) out[x] = std::min(a[x], b[x]);
}

ORB_ROW_KERNEL void ComplementKeysRow(std::int32_t const* keys, std::ptrdiff_t count, std::int32_t* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) out[x] = ~keys[x];
}

}  // namespace orb
