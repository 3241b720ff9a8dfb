// Curves of tone: functions of 0..1 to 0..1, from points or by name, and their tables for the operator.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace orb::host {

// 0 is black, 1 is white.
using ToneCurve = std::function<double(double)>;

struct CurvePoint {
  double x = 0.0;
  double y = 0.0;
};

// A smooth curve through two or more points, x rising. Between two points it rises, falls or stays as they do: cubic
// pieces whose slopes are the harmonic means of Fritsch and Butland (SIAM J. Sci. Stat. Comput. 5, 1984, 300), the
// slopes at the ends by the three nearest points, limited likewise. Two points give the straight line. Before the first
// and after the last point the curve is level.
ToneCurve CurveThrough(std::vector<CurvePoint> const& points);

// A named curve with at most one amount that shapes it.
struct CurvePreset {
  char const* name;
  char const* help;
  double least;  // of the amount; equal to `most` where there is none
  double most;
  double byDefault;
  double (*at)(double x, double amount);

  bool TakesAmount() const { return least < most; }
};

std::vector<CurvePreset> const& CurvePresets();
// The name is one of the presets'.
CurvePreset const& FindCurvePreset(std::string const& name);

// The curve at `count` places from 0 to 1, evenly spaced.
std::vector<float> SampleCurve(ToneCurve const& curve, int count);

}  // namespace orb::host
