#include <orbimg/display/draw_text_kernels.h>

#include <orbimg/core/row_kernel.h>

namespace orb {

// Full scale times a is a itself, so the first composite is only the way in and out. The 0 that the second adds counts
// where the levels are inverted and black is -0.0.
ORB_ROW_KERNEL void PassTwiceRow(float const* src, Level from, std::ptrdiff_t count, Level to, float* dst) {
  EachBlock(src, dst, count, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t x = begin; x < end; ++x) {
      float const cut = static_cast<float>(to.ToRaw(from.To256(src[x])));
      dst[x] = static_cast<float>(to.ToRaw(to.To256(cut) + 0.0));
    }
  });
}

}  // namespace orb
