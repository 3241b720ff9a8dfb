// Columns beyond the sides of a row, each the nearest one inside.
#pragma once

#include <algorithm>
#include <cstddef>

namespace orb {

// Columns begin .. end - 1 of a row of `width` columns.
inline void CopyClamped(float const* row, int width, std::ptrdiff_t begin, std::ptrdiff_t end, float* out) {
  std::ptrdiff_t const first = std::clamp<std::ptrdiff_t>(0, begin, end);
  std::ptrdiff_t const last = std::clamp<std::ptrdiff_t>(width, first, end);
  std::fill(out, out + (first - begin), row[0]);
  std::copy(row + first, row + last, out + (first - begin));
  std::fill(out + (last - begin), out + (end - begin), row[width - 1]);
}

}  // namespace orb
