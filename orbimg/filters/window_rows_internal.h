// The rows of a filter's window.
#pragma once

#include <orbimg/core/orb_image.h>
#include <orbimg/filters/edge_rules_internal.h>

namespace orb {

inline constexpr unsigned kReadRow = 1;
inline constexpr unsigned kLockRow = 2;

// rows[0 .. 2 radius] become the addresses, at column x, of rows y - radius .. y + radius, mirrored at the edges.
inline void SetWindowRows(COrbImage const& image, int x, int y, int plane, int radius, unsigned flags, float** rows) {
  for (int k = 0; k <= 2 * radius; ++k) {
    int const row = MirrorRow(std::int64_t{y} + k - radius, image.GetHeight());
    rows[k] = image.GetImageAdr(x, row, plane, kReadRow | (flags & kLockRow), nullptr);
  }
}

}  // namespace orb
