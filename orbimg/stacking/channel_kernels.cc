#include <orbimg/stacking/channel_kernels.h>

#include <orbimg/core/row_kernel.h>

namespace orb {

ORB_ROW_KERNEL void PrimariesRow(float const* const complements[3], std::ptrdiff_t count, float* const primaries[3]) {
  float const* const cyan = complements[0];
  float const* const magenta = complements[1];
  float const* const yellow = complements[2];
  float* const red = primaries[0];
  float* const green = primaries[1];
  float* const blue = primaries[2];
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    double const c = cyan[x];
    double const m = magenta[x];
    double const y = yellow[x];
    red[x] = static_cast<float>(m + y - c);
    green[x] = static_cast<float>(c + y - m);
    blue[x] = static_cast<float>(c + m - y);
  }
}

ORB_ROW_KERNEL void PairRow(float const* p, float const* q, double factor, std::ptrdiff_t count, float* dst) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    dst[x] = static_cast<float>((static_cast<double>(p[x]) + static_cast<double>(q[x])) * factor);
  }
}

}  // namespace orb
