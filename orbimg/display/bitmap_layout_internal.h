// Where things lie in a bitmap block: a BITMAPINFOHEADER, at 8 bits 256 palette entries, and the rows from the bottom
// of the image to the top, each padded to a multiple of four bytes.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include <platform/bitmap_info.h>

namespace orb {

inline constexpr std::size_t kPaletteEntries = 256;

struct BitmapLayout {
  std::size_t height;
  std::size_t usedBytes;  // of a row, without its padding
  std::size_t stride;
  std::size_t rowsOffset;

  // `bitCount` 8 or 24. No width or no height is no rows.
  BitmapLayout(int width, int rows, int bitCount)
      : height(static_cast<std::size_t>(std::max(rows, 0))),
        usedBytes(static_cast<std::size_t>(std::max(width, 0)) * (bitCount == 8 ? 1 : 3)),
        stride((usedBytes + 3) / 4 * 4),
        rowsOffset(sizeof(BITMAPINFOHEADER) + (bitCount == 8 ? kPaletteEntries * sizeof(RGBQUAD) : 0)) {}

  std::size_t RowOffset(int y) const { return rowsOffset + (height - 1 - static_cast<std::size_t>(y)) * stride; }
  std::size_t BlockSize() const { return rowsOffset + height * stride; }

  // What the header says of the size of the rows: 0 if 32 bits cannot hold it, as is allowed for rows that are not
  // compressed.
  std::uint32_t SizeField() const {
    std::size_t const size = height * stride;
    return size <= std::numeric_limits<std::uint32_t>::max() ? static_cast<std::uint32_t>(size) : 0;
  }
};

}  // namespace orb
