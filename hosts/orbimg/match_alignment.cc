#include <hosts/orbimg/match_alignment.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include <hosts/orbimg/clean_frame.h>
#include <hosts/orbimg/frame_statistics.h>

namespace orb::host {
namespace {

constexpr int kReach = 2;                // pixels: the surface goes through 5 x 5 shifts
constexpr double kLevelInNoises = 50.0;  // the common level; high enough that the means of two frames hardly differ

AlignmentOutcome Refuse(std::string reason) { return AlignmentOutcome{std::nullopt, std::move(reason)}; }

// f = a + b x + c y + d x^2 + e y^2 + g x y by least squares over the grid of -reach .. reach, from its moments.
class QuadraticSurface {
 public:
  void Add(int x, int y, double value) {
    double const xx = static_cast<double>(x) * x;
    double const yy = static_cast<double>(y) * y;
    n += 1.0;
    sumXX += xx;
    sumX4 += xx * xx;
    sumXXYY += xx * yy;
    f += value;
    fx += value * x;
    fy += value * y;
    fxx += value * xx;
    fyy += value * yy;
    fxy += value * x * y;
  }

  // Where the gradient is 0; nothing unless that is a minimum.
  std::optional<Position> Minimum() const {
    double const meanXX = sumXX / n;
    double const spread = sumX4 - n * meanXX * meanXX;
    double const b = fx / sumXX;
    double const c = fy / sumXX;
    double const d = (fxx - meanXX * f) / spread;
    double const e = (fyy - meanXX * f) / spread;
    double const g = fxy / sumXXYY;
    double const determinant = 4.0 * d * e - g * g;
    if (!(d > 0.0 && determinant > 0.0)) return std::nullopt;
    return Position{(g * c - 2.0 * e * b) / determinant, (g * b - 2.0 * d * c) / determinant};
  }

 private:
  double n = 0.0;
  double sumXX = 0.0;  // the grid is square: the same for y
  double sumX4 = 0.0;
  double sumXXYY = 0.0;
  double f = 0.0;
  double fx = 0.0;
  double fy = 0.0;
  double fxx = 0.0;
  double fyy = 0.0;
  double fxy = 0.0;
};

// The minimum beside a whole shift, as an offset from it.
std::optional<Position> FindFraction(CImgMatching& reference, COrbImage& frame, int x, int y) {
  double ratio = static_cast<double>(reference.GetAvrGrayRaw(0)) / frame.GetAvrGrayRaw(0);
  QuadraticSurface surface;
  for (int j = -kReach; j <= kReach; ++j) {
    for (int i = -kReach; i <= kReach; ++i) surface.Add(i, j, reference.CalcValue(&frame, x + i, y + j, &ratio));
  }
  std::optional<Position> const minimum = surface.Minimum();
  bool const near = minimum && std::abs(minimum->x) <= kReach && std::abs(minimum->y) <= kReach;
  return near ? minimum : std::nullopt;
}

bool IsOnEdge(double found, double start, int range) { return std::abs(found - std::trunc(start)) >= range / 2; }

}  // namespace

COrbImage PrepareForMatching(COrbImage const& image, MatchAlignmentSettings const& settings) {
  COrbImage copy = SmoothFrame(CleanFrame(image, settings.cellSide), settings.smoothing);
  double const noise = MeasureSky(copy, 0, nullptr).noise;
  float const level = static_cast<float>(noise > 0.0 ? kLevelInNoises * noise : 1.0);
  for (int y = 0; y < copy.GetHeight(); ++y) {
    float* row = copy.GetImageAdr(0, y, 0, 0, nullptr);
    for (int x = 0; x < copy.GetWidth(); ++x) row[x] += level;
  }
  return copy;
}

AlignmentOutcome AlignByMatching(COrbImage const& reference, COrbImage const& frame,
                                 MatchAlignmentSettings const& settings) {
  CImgMatching matching;
  matching.CopyImage(reference, nullptr, nullptr);
  COrbImage source(frame);
  double x = settings.startX;
  double y = settings.startY;
  std::string const search = "within " + std::to_string(settings.range / 2) + " pixels of the start";
  if (matching.Do(&source, &x, &y, settings.range, 0, 0) == 0) {
    return Refuse("no shift " + search + " leaves an overlap with the reference");
  }
  if (IsOnEdge(x, settings.startX, settings.range) || IsOnEdge(y, settings.startY, settings.range)) {
    return Refuse("no best shift " + search + ": the match still improves at the edge of the range");
  }
  std::optional<Position> const fraction = FindFraction(matching, source, static_cast<int>(x), static_cast<int>(y));
  if (!fraction) return Refuse("no shift " + search + " stands out");
  Alignment alignment;
  alignment.method = AlignmentMethod::kMatch;
  alignment.transform.dx = x + fraction->x;
  alignment.transform.dy = y + fraction->y;
  alignment.transform.cx = (frame.GetWidth() - 1) / 2.0;
  alignment.transform.cy = (frame.GetHeight() - 1) / 2.0;
  return AlignmentOutcome{alignment, ""};
}

}  // namespace orb::host
