// The shift and rotation that best lay positions of a frame over positions of the reference.
#pragma once

#include <vector>

#include <hosts/orbimg/frame_transform.h>

namespace orb::host {

// The same star in both.
struct PositionPair {
  Position reference;
  Position frame;
};

struct RigidFit {
  FrameTransform transform;
  double rms = 0.0;         // root of the mean squared distance, pixels
  double angleError = 0.0;  // standard error of the angle, degrees; 0 where nothing is left to estimate it from
};

// Least squares over shift and angle, the rotation being about `centre`. With one pair, or all in one place, the angle
// is 0; no pairs give no shift either.
RigidFit FitRigid(std::vector<PositionPair> const& pairs, Position const& centre);

// Least squares over the shift alone.
RigidFit FitShift(std::vector<PositionPair> const& pairs, Position const& centre);

// Distance between where the transform puts the reference's star and where the frame has it, for each pair.
std::vector<double> FindResiduals(std::vector<PositionPair> const& pairs, FrameTransform const& transform);

// Root of the mean square; 0 for none.
double RootMeanSquare(std::vector<double> const& values);

}  // namespace orb::host
