#include <tests/reference/points_reference.h>

#include <cmath>

#include <tests/reference/pixels_reference.h>

namespace orb::test::reference {

namespace {

double CutAtZero(double v) { return v < 0.0 ? 0.0 : v; }

double ValueForMean(COrbImage& image, int x, int y) {
  double const r = CutAtZero(To256(image, Sample(image, x, y, 0), 0));
  if (!image.IsColor()) return r;
  double const g = CutAtZero(To256(image, Sample(image, x, y, 1), 1));
  double const b = CutAtZero(To256(image, Sample(image, x, y, 2), 2));
  return 0.299 * r + 0.587 * g + 0.114 * b;
}

double ValueForWeight(COrbImage& image, int x, int y) {
  double const r = To256(image, Sample(image, x, y, 0), 0);
  if (!image.IsColor()) return r;
  double const g = To256(image, Sample(image, x, y, 1), 1);
  double const b = To256(image, Sample(image, x, y, 2), 2);
  return 0.299 * r + 0.587 * g + 0.114 * b;
}

}  // namespace

Centroid CenterOfGravity(COrbImage& image, CRect const* rect) {
  CRect const given = rect != nullptr ? *rect : CRect(0, 0, image.GetWidth(), image.GetHeight());
  CRect area = given;
  if (area.left < 0) area.left = 0;
  if (area.top < 0) area.top = 0;
  if (area.right > image.GetWidth()) area.right = image.GetWidth();
  if (area.bottom > image.GetHeight()) area.bottom = image.GetHeight();

  double sum = 0.0;
  for (int y = area.top; y < area.bottom; ++y) {
    for (int x = area.left; x < area.right; ++x) sum += ValueForMean(image, x, y);
  }
  double const rows = static_cast<double>(area.bottom) - area.top;
  double const columns = static_cast<double>(area.right) - area.left;
  double const mean = sum / rows / columns;

  double sumW = 0.0;
  double sumX = 0.0;
  double sumY = 0.0;
  for (int y = area.top; y < area.bottom; ++y) {
    for (int x = area.left; x < area.right; ++x) {
      double const excess = ValueForWeight(image, x, y) - mean;
      double const weight = excess <= 0.0 ? 0.0 : excess * excess;
      sumW += weight;
      sumX += x * weight;
      sumY += y * weight;
    }
  }
  double const x = sumX / sumW;
  double const y = sumY / sumW;
  double const column = std::trunc(x + 0.5);
  double const row = std::trunc(y + 0.5);
  if (given.left <= column && column < given.right && given.top <= row && row < given.bottom) return {x, y};
  long long const twiceX = static_cast<long long>(given.left) + given.right;
  long long const twiceY = static_cast<long long>(given.top) + given.bottom;
  return {static_cast<double>(twiceX / 2), static_cast<double>(twiceY / 2)};
}

Fit FitOf(COrbImage& image, COrbImage& other) {
  Fit fit{0, 0.0, 0.0, 0.0};
  if (!other.IsValidStdPt(0)) return fit;
  if (!image.IsValidStdPt(0)) return fit;
  fit.dx = image.GetStdPt(0).fx - other.GetStdPt(0).fx;
  fit.dy = image.GetStdPt(0).fy - other.GetStdPt(0).fy;
  fit.used = 1;
  if (!image.IsValidStdPt(1)) return fit;
  int const ax = image.GetStdPt(0).x - image.GetStdPt(1).x;
  int const ay = image.GetStdPt(0).y - image.GetStdPt(1).y;
  if (ax == 0 && ay == 0) return fit;
  double const a = std::atan2(static_cast<double>(-ay), static_cast<double>(ax));
  int const bx = other.GetStdPt(0).x - other.GetStdPt(1).x;
  int const by = other.GetStdPt(0).y - other.GetStdPt(1).y;
  if (bx == 0 && by == 0) return fit;
  double const b = std::atan2(static_cast<double>(-by), static_cast<double>(bx));
  fit.angle = std::floor((b - a) * 57.29577951308232 * 10.0) * 0.1;
  fit.used = 2;
  return fit;
}

}  // namespace orb::test::reference
