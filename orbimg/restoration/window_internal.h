// The window that a restoration works on.
#pragma once

#include <climits>
#include <cstdint>

#include <orbimg/core/image.h>
#include <platform/rect.h>

namespace orb {

struct Window {
  int left;
  int top;
  int width;  // 0 where the rectangle's is no number of pixels
  int height;
  bool isWhole;

  bool IsValid() const { return width > 0 && height > 0; }
};

// Intended: only the sizes of image and rectangle are compared, and nothing is clamped: a rectangle of the image's size
// that lies elsewhere is the whole image.
inline Window WindowOf(CImage const& image, CRect const* rect) {
  Window const whole{0, 0, image.GetWidth(), image.GetHeight(), true};
  if (rect == nullptr) return whole;
  std::int64_t const width = static_cast<std::int64_t>(rect->right) - rect->left;
  std::int64_t const height = static_cast<std::int64_t>(rect->bottom) - rect->top;
  if (width == whole.width && height == whole.height) return whole;
  auto const pixels = [](std::int64_t side) { return side > 0 && side <= INT_MAX ? static_cast<int>(side) : 0; };
  return Window{rect->left, rect->top, pixels(width), pixels(height), false};
}

}  // namespace orb
