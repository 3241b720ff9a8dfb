// What the filters read beyond the edges of an image. The rules differ on purpose.
//
//   reader                                       row outside the plane    column outside the row
//   CFilterRows::Convolve, ConvolveClip, Collect MirrorRow                ClampIndex
//   CFilterRows::Pixel                           0.0 below the centre     0.0
//   the sample functions of CImgFilter           MirrorRow                TurnedOffset
//   CImgFilter::HighPassRaw                      ClampIndex               ClampIndex
//   CImgFilterBlur::MedianFilter                 skipped (IsInside)       skipped (IsInside)
//   MakeFilterWork, MakeDDWork                   MirrorBorder             MirrorBorder
//
// No rule reads outside: what a rule by itself would leave there, in an image smaller than the neighbourhood, is held
// at the nearest edge. The length is 1 at least.
#pragma once

#include <algorithm>
#include <cstdint>

namespace orb {

// The nearest index that exists.
inline int ClampIndex(std::int64_t i, int length) {
  return static_cast<int>(std::clamp<std::int64_t>(i, 0, std::max(length - 1, 0)));
}

// Intended: the two ends differ. At the low end index 0 is not repeated (-1 reads 1), at the high end length - 1 is
// (length reads length - 1). There is no second reflection.
inline int MirrorRow(std::int64_t i, int length) {
  if (i < 0) {
    i = -i;
  } else if (i >= length) {
    i = 2 * std::int64_t{length} - i - 1;
  }
  return ClampIndex(i, length);
}

// The same in the border of a work image, but that what was mirrored at the low end may be mirrored again at the high
// one.
inline int MirrorBorder(std::int64_t i, int length) {
  if (i < 0) i = -i;
  if (i > length - 1) i = 2 * std::int64_t{length} - i - 1;
  return ClampIndex(i, length);
}

// The offset from column x that is read for the wanted one: turned to the other side where it would leave the row.
inline int TurnedOffset(int offset, int x, int width) {
  std::int64_t const column = std::int64_t{x} + offset;
  if (column >= 0 && column < width) return offset;
  return static_cast<int>(ClampIndex(std::int64_t{x} - offset, width) - std::int64_t{x});
}

inline bool IsInside(std::int64_t i, int length) { return i >= 0 && i < length; }

}  // namespace orb
