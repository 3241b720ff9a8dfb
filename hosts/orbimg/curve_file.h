// Files with the points of a curve.
//
// Text: a point a line, x and y apart by blanks or a comma; what follows a # is a remark. Or JSON: an array of pairs
// [[0, 0], [0.2, 0.5], [1, 1]], alone or under "points".
#pragma once

#include <string>
#include <vector>

#include <hosts/orbimg/tone_curve.h>

namespace orb::host {

// Two points or more, all numbers from 0 to 1, x rising. HostError names the file, and the line or point.
std::vector<CurvePoint> ReadCurvePoints(std::string const& path);

}  // namespace orb::host
