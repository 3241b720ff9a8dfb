#include <tests/reference/star_profile_reference.h>

#include <algorithm>
#include <cmath>

namespace orb::test::reference {

double StarValue(COrbImage& image, int x, int y) {
  double sum = 0.0;
  int const planes = image.GetPlanes();
  if (planes == 0) return 0.0;
  for (int p = 0; p < planes; ++p) sum += static_cast<double>(image.GetPixelGrayRaw(x, y, p));
  return sum / planes;
}

CPoint ClimbToPeak(COrbImage& image, CPoint point) {
  int cx = point.x;
  int cy = point.y;
  while (true) {
    int bestX = cx;
    int bestY = cy;
    double best = StarValue(image, cx, cy);
    for (int x = cx - 1; x <= cx + 1; ++x) {
      for (int y = cy - 1; y <= cy + 1; ++y) {
        if (x < 0 || y < 0 || x >= image.GetWidth() || y >= image.GetHeight()) continue;
        double const v = StarValue(image, x, y);
        if (v > best) {
          best = v;
          bestX = x;
          bestY = y;
        }
      }
    }
    if (bestX == cx && bestY == cy) return CPoint(cx, cy);
    cx = bestX;
    cy = bestY;
  }
}

std::vector<double> SampleStarSky(COrbImage& image, CPoint peak) {
  std::vector<double> samples;
  double prev = StarValue(image, peak.x, peak.y);
  int x = peak.x - 1;
  while (x > 0) {
    double const w = StarValue(image, x, peak.y);
    if (w > prev) break;
    prev = w;
    x -= 1;
  }
  x -= 2;
  for (int n = 0; n < 12; ++n) {
    if (x < 0) break;
    samples.push_back(StarValue(image, x, peak.y));
    --x;
  }

  prev = StarValue(image, peak.x, peak.y);
  x = peak.x + 1;
  while (x < image.GetWidth()) {
    double const w = StarValue(image, x, peak.y);
    if (w > prev) break;
    prev = w;
    x += 1;
  }
  x += 2;
  for (int n = 0; n < 12 && x < image.GetWidth(); ++n, ++x) samples.push_back(StarValue(image, x, peak.y));

  prev = StarValue(image, peak.x, peak.y);
  int y = peak.y - 1;
  while (y > 0) {
    double const w = StarValue(image, peak.x, y);
    if (w > prev) break;
    prev = w;
    y -= 1;
  }
  y -= 2;
  for (int n = 0; n < 12 && y >= 0; ++n, --y) samples.push_back(StarValue(image, peak.x, y));

  prev = StarValue(image, peak.x, peak.y);
  y = peak.y + 1;
  while (y < image.GetHeight()) {
    double const w = StarValue(image, peak.x, y);
    if (w > prev) break;
    prev = w;
    y += 1;
  }
  y += 2;
  for (int n = 0; n < 12 && y < image.GetHeight(); ++n, ++y) samples.push_back(StarValue(image, peak.x, y));
  return samples;
}

int FindStarBase(COrbImage& image, CPoint peak, double& base) {
  std::vector<double> samples = SampleStarSky(image, peak);
  if (samples.empty()) return 0;
  std::sort(samples.begin(), samples.end(), [](double a, double b) {
    return std::isnan(b) ? !std::isnan(a) : a < b;  // not-a-number last
  });
  base = samples[samples.size() / 2];
  return 1;
}

int FindStarWidth(COrbImage& image, CPoint peak, double base, double& width) {
  double const half = (StarValue(image, peak.x, peak.y) + base) * 0.5;
  if (peak.x - 1 < 0) return 0;
  int x = peak.x - 1;
  while (x >= 0 && !(StarValue(image, x, peak.y) <= half)) --x;
  if (x < 0) return 0;
  double w = StarValue(image, x, peak.y);
  double const xl = x + (half - w) / (StarValue(image, x + 1, peak.y) - w);

  x = peak.x + 1;
  while (x <= image.GetWidth() - 1 && !(StarValue(image, x, peak.y) <= half)) ++x;
  if (x > image.GetWidth() - 1) return 0;
  w = StarValue(image, x, peak.y);
  double const xr = x - (half - w) / (StarValue(image, x - 1, peak.y) - w);

  if (peak.y - 1 < 0) return 0;
  int y = peak.y - 1;
  while (y >= 0 && !(StarValue(image, peak.x, y) <= half)) --y;
  if (y < 0) return 0;
  w = StarValue(image, peak.x, y);
  double const yt = y + (half - w) / (StarValue(image, peak.x, y + 1) - w);

  y = peak.y + 1;
  while (y < image.GetHeight() && !(StarValue(image, peak.x, y) <= half)) ++y;
  if (y >= image.GetHeight()) return 0;
  w = StarValue(image, peak.x, y);
  double const yb = y - (half - w) / (StarValue(image, peak.x, y - 1) - w);

  width = ((yb - yt) + (xr - xl)) * 0.5;
  return 1;
}

int MeasureStar(COrbImage& image, CPoint point, double& psf) {
  CPoint const peak = ClimbToPeak(image, point);
  double base = 0.0;
  if (FindStarBase(image, peak, base) == 0) return 0;
  if (StarValue(image, peak.x, peak.y) <= base) return 0;
  double width = 0.0;
  if (FindStarWidth(image, peak, base, width) == 0) return 0;
  if (width < 0.0 || width >= 20.0 || std::isnan(width)) return 0;
  psf = std::sqrt(width) * 0.4246609;
  return 1;
}

}  // namespace orb::test::reference
