// The bytes of a drawing's colour.
#pragma once

#include <algorithm>

#include <platform/colorref.h>

namespace orb {

// A colour image's planes that are drawn into.
inline constexpr int kColorPlanes = 3;

inline int ColorByte(unsigned long colour, int plane) { return static_cast<int>(colour >> (8 * plane) & 0xFF); }

// Twice the gray byte: the largest and the smallest of the three together.
inline int TwiceGrayByte(unsigned long colour) {
  auto const [least, most] = std::minmax({ColorByte(colour, 0), ColorByte(colour, 1), ColorByte(colour, 2)});
  return most + least;
}

}  // namespace orb
