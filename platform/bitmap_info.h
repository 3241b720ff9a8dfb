// The header of a device-independent bitmap and its palette entry, as they lie in memory (little-endian).
#pragma once

#include <cstdint>

struct BITMAPINFOHEADER {
  std::uint32_t biSize;
  std::int32_t biWidth;
  std::int32_t biHeight;  // above 0: rows run bottom-up; below 0: top-down
  std::uint16_t biPlanes;
  std::uint16_t biBitCount;
  std::uint32_t biCompression;
  std::uint32_t biSizeImage;
  std::int32_t biXPelsPerMeter;
  std::int32_t biYPelsPerMeter;
  std::uint32_t biClrUsed;
  std::uint32_t biClrImportant;
};
static_assert(sizeof(BITMAPINFOHEADER) == 40);

struct RGBQUAD {
  std::uint8_t rgbBlue;
  std::uint8_t rgbGreen;
  std::uint8_t rgbRed;
  std::uint8_t rgbReserved;
};
static_assert(sizeof(RGBQUAD) == 4);

struct PALETTEENTRY {
  std::uint8_t peRed;
  std::uint8_t peGreen;
  std::uint8_t peBlue;
  std::uint8_t peFlags;
};
static_assert(sizeof(PALETTEENTRY) == 4);

inline constexpr std::uint32_t BI_RGB = 0;
inline constexpr std::uint32_t BI_BITFIELDS = 3;
