#include <orbimg/core/color.h>

#include <cmath>

#include <orbimg/core/color_model_internal.h>

namespace {

using namespace orb::color;

// One factor for all three channels, which keeps their ratio.
double GammaFactor(Triple v, double exponent) {
  double const m = Mean(v);
  return m >= kLeastMean ? std::pow(m, exponent) : 1.0;
}

double RootOrLine(double t) { return t > kLeastCube ? std::pow(t, kThird) : kSlope * t + kOffset; }

double CubeOrLine(double f) { return f <= kLeastRoot ? (f - kOffset) * kInverseSlope : f * f * f; }

double LightnessToY(double l) {
  if (l <= kGreatestLinearLightness) return l * kInverseLightnessSlope;
  double const f = (l + 16.0) * kInverse116;
  return f * f * f;
}

}  // namespace

void CColor::SetRgb(double newR, double newG, double newB) {
  R = newR;
  G = newG;
  B = newB;
}

void CColor::SetXyz(double newX, double newY, double newZ) {
  X = newX;
  Y = newY;
  Z = newZ;
}

void CColor::SetLab(double newL, double newA, double newB) {
  L = newL;
  a = newA;
  b = newB;
}

void CColor::RgbToXyz(double r, double g, double blue) {
  double const k = GammaFactor(Triple{r, g, blue}, kToLinear);
  SetRgb(k * r, k * g, k * blue);
  Triple const xyz = XyzOf(Triple{R, G, B});
  SetXyz(xyz.x, xyz.y, xyz.z);
}

void CColor::XyzToRgb(double x, double y, double z) {
  SetXyz(x, y, z);
  Triple const solved = LinearOf(Triple{x, y, z});
  Triple const linear{CutBelow0(solved.x), CutBelow0(solved.y), CutBelow0(solved.z)};
  double const k = GammaFactor(linear, kToEncoded);
  SetRgb(k * linear.x, k * linear.y, k * linear.z);
}

void CColor::RgbToLab(double r, double g, double blue) {
  RgbToXyz(r, g, blue);
  double const ty = Y * kInverseWhite;
  double const fx = RootOrLine(X * kInverseWhite);
  double const fy = RootOrLine(ty);
  double const fz = RootOrLine(Z * kInverseWhite);
  SetLab(ty > kLeastCube ? 116 * fy - 16 : kLightnessSlope * ty, (fx - fy) * 500.0, (fy - fz) * 200.0);
}

void CColor::LabToRgb(double l, double newA, double newB) {
  SetLab(l, newA, newB);
  double const ty = LightnessToY(l);
  double const fy = ty <= kLeastCube ? kSlope * ty + kOffset : std::pow(ty, kThird);
  double const tx = CubeOrLine(newA * 0.002 + fy);
  double const tz = CubeOrLine(fy - newB * 0.005);
  XyzToRgb(kWhite * tx, kWhite * ty, kWhite * tz);
}
