// Where a pixel of another frame lies in the image that is sampled.
#pragma once

#include <orbimg/core/float_point.h>

namespace orb {

// Shift in pixels, rotation about the sampled image's centre, magnification. The exact comparisons pick the cheap path
// for plain shifts, which need no centre.
struct Transform {
  double dx;
  double dy;
  double sinA;
  double cosA;
  double scale;
  double cx;
  double cy;

  bool IsRotated() const { return !(cosA == 1.0 && sinA == 0.0); }
  bool IsShift() const { return !IsRotated() && scale == 1.0; }

  // p = x - cx - dx, q = cy - y + dy (upward): sx = (p cos - q sin) * scale + cx, sy = cy - (p sin + q cos) * scale
  void Apply(int x, int y, double& sx, double& sy) const {
    if (IsShift()) {
      sx = x - dx;
      sy = y - dy;
    } else if (!IsRotated()) {
      sx = (x - cx - dx) * scale + cx;
      sy = (y - cy - dy) * scale + cy;
    } else {
      double const p = x - cx - dx;
      double const q = cy - y + dy;
      sx = (p * cosA - q * sinA) * scale + cx;
      sy = cy - (p * sinA + q * cosA) * scale;
    }
  }
};

}  // namespace orb
