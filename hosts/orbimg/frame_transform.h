// Where a pixel of the reference lies in a frame: a shift and a rotation, in the terms of the library's sampler.
//
// s = c0 + R (x - d - c0), x being a position in the reference, s the position in the frame, d = (dx, dy) and
// c0 = (cx, cy) the frame's stdCtr; R turns by `angle`, counter-clockwise as seen on the screen for a step from the
// reference to the frame. dx, dy, angle and stdCtr go to the operators as they stand here.
#pragma once

#include <string>

namespace orb::host {

struct Position {
  double x = 0.0;
  double y = 0.0;
};

// Square of the distance.
double SquaredDistance(Position const& a, Position const& b);

struct FrameTransform {
  double dx = 0.0;     // pixels
  double dy = 0.0;     // pixels, downward
  double angle = 0.0;  // degrees
  double cx = 0.0;     // pixels of the frame
  double cy = 0.0;

  // The same mapping with its rotation written about another point of the frame; only dx and dy change with it.
  FrameTransform About(Position const& centre) const;
  // "dx 1.2500 dy -3.0000 angle 0.01000 about 512.00 384.00": for HISTORY cards.
  std::string Text() const;
};

// A transform made ready for many positions.
class RigidMap {
 public:
  explicit RigidMap(FrameTransform const& transform);
  // With a sine and a cosine of the caller's in place of the system's.
  RigidMap(FrameTransform const& transform, double initSinA, double initCosA);

  Position ToFrame(Position const& reference) const;  // the sampler's formula, to the last bit
  Position ToReference(Position const& frame) const;  // its inverse

 private:
  FrameTransform t;
  double sinA;
  double cosA;
};

}  // namespace orb::host
