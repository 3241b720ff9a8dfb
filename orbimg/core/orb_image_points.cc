// Selection, standard points, centroid, and the fit between two images.
#include <cmath>

#include <orbimg/core/brightness_internal.h>
#include <orbimg/core/operator_run.h>
#include <orbimg/core/orb_image.h>

namespace {

constexpr int kUnset = -1;

bool IsSet(CfPoint const& point) { return point.x != kUnset && point.y != kUnset; }

// The value that a pixel has for the centroid's mean: on the 256-scale, what lies below the level counting as 0.
double FlooredValue(COrbImage& image, int x, int y) {
  auto const floored = [&](int plane) {
    double const v = image.To256(static_cast<double>(image.GetPixelGrayRaw(x, y, plane)), plane);
    return v < 0.0 ? 0.0 : v;
  };
  if (!orb::HasBrightness(image)) return floored(0);
  return orb::kRedWeight * floored(0) + orb::kGreenWeight * floored(1) + orb::kBlueWeight * floored(2);
}

// The value for its weight. Intended: nothing is floored here.
double PlainValue(COrbImage& image, int x, int y) {
  auto const in256 = [&](int plane) {
    return image.To256(static_cast<double>(image.GetPixelGrayRaw(x, y, plane)), plane);
  };
  if (!orb::HasBrightness(image)) return in256(0);
  return orb::kRedWeight * in256(0) + orb::kGreenWeight * in256(1) + orb::kBlueWeight * in256(2);
}

double MeanOf(COrbImage& image, orb::Bounds const& bounds) {
  double sum = 0.0;
  for (int y = bounds.top; y < bounds.bottom; ++y) {
    for (int x = bounds.left; x < bounds.right; ++x) sum += FlooredValue(image, x, y);
  }
  return sum / bounds.Rows() / bounds.Columns();
}

// True if the pixel nearest to (x, y) lies inside the rectangle. Not-a-number does not.
bool IsInside(double x, double y, CRect const& rect) {
  double const column = std::trunc(x + 0.5);
  double const row = std::trunc(y + 0.5);
  return rect.left <= column && column < rect.right && rect.top <= row && row < rect.bottom;
}

// Direction from the second point to the first, in radians, the y axis upward. Null if the two coincide.
// The differences are negated as integers, so that a 0 stays +0: atan2 gives +pi, not -pi, for a pair along a row.
bool FindDirection(CfPoint const& first, CfPoint const& second, double& direction) {
  auto const dx = static_cast<long long>(first.x) - second.x;
  auto const dy = static_cast<long long>(first.y) - second.y;
  if (dx == 0 && dy == 0) return false;
  direction = std::atan2(static_cast<double>(-dy), static_cast<double>(dx));
  return true;
}

}  // namespace

void COrbImage::InitStdPt() {
  stdPt[0].Set(kUnset, kUnset);
  stdPt[1].Set(kUnset, kUnset);
  stdCtr.Set(kUnset, kUnset);
}

void COrbImage::SetStdPt(int n, CfPoint pt) {
  stdPt[n] = pt;
  if (n == 0) SetStdCtr(pt);
}

void COrbImage::SetInvalidStdPt(int n) {
  stdPt[n].Set(kUnset, kUnset);
  if (n == 0) stdCtr.Set(kUnset, kUnset);
}

int COrbImage::GetStdPtNum() { return IsValidStdPt(0) + IsValidStdPt(1); }

int COrbImage::IsValidStdPt(int n) { return IsSet(stdPt[n]) ? 1 : 0; }

int COrbImage::IsValidStdCtr() { return IsSet(stdCtr) ? 1 : 0; }

void COrbImage::SetDefaultCenter() { stdCtr.Set(width / 2, height / 2); }

int COrbImage::GetSelection(CRect* rect) {
  if (selection.IsRectEmpty()) return 0;
  *rect = selection;
  return 1;
}

// m = mean of the floored values; e = value - m; w = e * e where e > 0, otherwise 0
// x = sum(column * w) / sum(w), y = sum(row * w) / sum(w)
void COrbImage::GetCenterOfGravity(double& x, double& y, CRect* rect) {
  orb::Bounds const bounds = orb::ClampRectWeakly(rect, width, height);
  // Intended: the fallback takes the rectangle as it came, unclamped.
  CRect const asGiven = rect != nullptr ? *rect : CRect(0, 0, width, height);
  double const mean = MeanOf(*this, bounds);
  double sumW = 0.0;
  double sumX = 0.0;
  double sumY = 0.0;
  for (int row = bounds.top; row < bounds.bottom; ++row) {
    for (int column = bounds.left; column < bounds.right; ++column) {
      double const e = PlainValue(*this, column, row) - mean;
      double const w = e <= 0.0 ? 0.0 : e * e;
      sumW += w;
      sumX += column * w;
      sumY += row * w;
    }
  }
  x = sumX / sumW;
  y = sumY / sumW;
  if (IsInside(x, y, asGiven)) return;
  x = static_cast<double>((static_cast<long long>(asGiven.left) + asGiven.right) / 2);
  y = static_cast<double>((static_cast<long long>(asGiven.top) + asGiven.bottom) / 2);
}

void COrbImage::GetCenterOfGravity(int& x, int& y, CRect* rect) {
  double fx = 0.0;
  double fy = 0.0;
  GetCenterOfGravity(fx, fy, rect);
  x = static_cast<int>(fx + 0.5);
  y = static_cast<int>(fy + 0.5);
}

int COrbImage::GetFitPrm(COrbImage* other, double& dx, double& dy, double& angle) {
  dx = 0.0;
  dy = 0.0;
  angle = 0.0;
  // Intended: the centre stays on `other` whatever the result, because the sampler needs one.
  if (!other->IsValidStdCtr()) other->SetDefaultCenter();
  if (!other->IsValidStdPt(0) || !IsValidStdPt(0)) return 0;
  dx = stdPt[0].fx - other->stdPt[0].fx;
  dy = stdPt[0].fy - other->stdPt[0].fy;
  // Intended: the other image's second point is taken as it is, also when unset.
  if (!IsValidStdPt(1)) return 1;
  double a = 0.0;
  double b = 0.0;
  if (!FindDirection(stdPt[0], stdPt[1], a)) return 1;
  if (!FindDirection(other->stdPt[0], other->stdPt[1], b)) return 1;
  angle = std::floor((b - a) * orb::kDegreesPerRadian * 10.0) * 0.1;
  return 2;
}

int COrbImage::GetFitPrm(COrbImage* other, double& dx, double& dy, double& angle, double offsetX, double offsetY,
                         double offsetAngle) {
  int const points = GetFitPrm(other, dx, dy, angle);
  // Intended: one point adds the shift, two add the shift and the angle, none adds nothing.
  if (points >= 1) {
    dx += offsetX;
    dy += offsetY;
  }
  if (points == 2) angle += offsetAngle;
  return points;
}
