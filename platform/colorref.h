// A colour in 32 bits: red in the low byte, then green, then blue; the high byte is 0.
#pragma once

#include <cstdint>

using COLORREF = std::uint32_t;

constexpr COLORREF RGB(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
  return static_cast<COLORREF>(red) | static_cast<COLORREF>(green) << 8 | static_cast<COLORREF>(blue) << 16;
}
constexpr std::uint8_t GetRValue(COLORREF color) { return static_cast<std::uint8_t>(color); }
constexpr std::uint8_t GetGValue(COLORREF color) { return static_cast<std::uint8_t>(color >> 8); }
constexpr std::uint8_t GetBValue(COLORREF color) { return static_cast<std::uint8_t>(color >> 16); }
