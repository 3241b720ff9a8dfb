// The size of an image.
#pragma once

#include <string>

namespace orb::host {

struct Shape {
  int width = 0;
  int height = 0;
  int planes = 0;

  bool operator==(Shape const&) const = default;
  std::string Text() const;  // "1092 x 736" or "800 x 800 x 3 planes"
};

}  // namespace orb::host
