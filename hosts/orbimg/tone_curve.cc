#include <hosts/orbimg/tone_curve.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace orb::host {
namespace {

double Secant(CurvePoint const& a, CurvePoint const& b) { return (b.y - a.y) / (b.x - a.x); }

// Slope at a point between two, `left` and `right` being the slopes of the straight lines to them.
double InnerSlope(double left, double right, double leftWidth, double rightWidth) {
  if (left * right <= 0.0) return 0.0;
  double const a = 2.0 * rightWidth + leftWidth;
  double const b = rightWidth + 2.0 * leftWidth;
  return (a + b) / (a / left + b / right);
}

// Slope at an end, from the line to its neighbour and that neighbour's other line.
double EndSlope(double near, double far, double nearWidth, double farWidth) {
  double const slope = ((2.0 * nearWidth + farWidth) * near - nearWidth * far) / (nearWidth + farWidth);
  if (slope * near <= 0.0) return 0.0;
  return near * far < 0.0 && std::abs(slope) > 3.0 * std::abs(near) ? 3.0 * near : slope;
}

std::vector<double> FindSlopes(std::vector<CurvePoint> const& p) {
  std::size_t const last = p.size() - 1;
  std::vector<double> secants;
  std::vector<double> widths;
  for (std::size_t i = 0; i < last; ++i) {
    secants.push_back(Secant(p[i], p[i + 1]));
    widths.push_back(p[i + 1].x - p[i].x);
  }
  if (last == 1) return {secants[0], secants[0]};
  std::vector<double> slopes{EndSlope(secants[0], secants[1], widths[0], widths[1])};
  for (std::size_t i = 1; i < last; ++i) {
    slopes.push_back(InnerSlope(secants[i - 1], secants[i], widths[i - 1], widths[i]));
  }
  slopes.push_back(EndSlope(secants[last - 1], secants[last - 2], widths[last - 1], widths[last - 2]));
  return slopes;
}

// The cubic between two points with slopes m and n, t being the share of the way.
double Between(CurvePoint const& a, CurvePoint const& b, double m, double n, double t) {
  double const h = b.x - a.x;
  double const s = 1.0 - t;
  double const y = s * s * ((1.0 + 2.0 * t) * a.y + t * h * m) + t * t * ((1.0 + 2.0 * s) * b.y - s * h * n);
  return std::clamp(y, std::min(a.y, b.y), std::max(a.y, b.y));
}

double Linear(double x, double) { return x; }

double Gamma(double x, double amount) { return std::pow(x, 1.0 / amount); }

double ArcSinh(double x, double amount) { return std::asinh(amount * x) / std::asinh(amount); }

// The rational function through (0, 0), (m, 1/2) and (1, 1).
double Midtone(double x, double m) { return (m - 1.0) * x / ((2.0 * m - 1.0) * x - m); }

}  // namespace

ToneCurve CurveThrough(std::vector<CurvePoint> const& points) {
  return [points, slopes = FindSlopes(points)](double x) {
    if (x <= points.front().x) return points.front().y;
    if (x >= points.back().x) return points.back().y;
    auto const above =
        std::upper_bound(points.begin(), points.end(), x, [](double at, CurvePoint const& p) { return at < p.x; });
    auto const i = static_cast<std::size_t>(above - points.begin()) - 1;
    double const t = (x - points[i].x) / (points[i + 1].x - points[i].x);
    return Between(points[i], points[i + 1], slopes[i], slopes[i + 1], t);
  };
}

std::vector<CurvePreset> const& CurvePresets() {
  static std::vector<CurvePreset> const presets = {
      {"linear", "the straight line", 0.0, 0.0, 0.0, Linear},
      {"gamma", "x to the power 1 / amount", 0.1, 10.0, 2.2, Gamma},
      {"asinh", "asinh(amount x) / asinh(amount): nearly straight near black, like a logarithm above", 0.01, 1e6, 20.0,
       ArcSinh},
      {"midtone", "lifts the tone of the amount to the middle, (m - 1) x / ((2 m - 1) x - m)", 0.0001, 0.9999, 0.25,
       Midtone},
  };
  return presets;
}

CurvePreset const& FindCurvePreset(std::string const& name) {
  auto const& presets = CurvePresets();
  return *std::find_if(presets.begin(), presets.end(), [&](CurvePreset const& preset) { return preset.name == name; });
}

std::vector<float> SampleCurve(ToneCurve const& curve, int count) {
  std::vector<float> table;
  table.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) table.push_back(static_cast<float>(curve(i / (count - 1.0))));
  return table;
}

}  // namespace orb::host
