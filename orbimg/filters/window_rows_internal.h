// The rows of a filter's window.
#pragma once

#include <orbimg/core/orb_image.h>
#include <orbimg/filters/edge_rules_internal.h>

namespace orb {

inline constexpr unsigned kReadRow = 1;
inline constexpr unsigned kLockRow = 2;

// rows[0 .. count - 1] become the addresses, at column x, of the rows from `first` on, mirrored at the edges.
inline void SetMirroredRows(COrbImage const& image, int x, std::int64_t first, int count, int plane, unsigned flags,
                            float** rows) {
  for (int k = 0; k < count; ++k) {
    rows[k] =
        image.GetImageAdr(x, MirrorRow(first + k, image.GetHeight()), plane, kReadRow | (flags & kLockRow), nullptr);
  }
}

// The rows y - radius .. y + radius.
inline void SetWindowRows(COrbImage const& image, int x, int y, int plane, int radius, unsigned flags, float** rows) {
  SetMirroredRows(image, x, std::int64_t{y} - radius, 2 * radius + 1, plane, flags, rows);
}

}  // namespace orb
