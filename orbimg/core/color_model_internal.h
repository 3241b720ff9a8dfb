// The numbers of the colour model, digit for digit, and its steps that need no power function: what CColor and its fast
// twin share.
#pragma once

namespace orb::color {

inline constexpr double kThird = 0.3333333333333333;

// Below it the mean of a colour is too small to be raised to a power.
inline constexpr double kLeastMean = 1e-07;
inline constexpr double kToLinear = 1.2000000000000002;    // 2.2 - 1
inline constexpr double kToEncoded = -0.5454545454545454;  // 1/2.2 - 1

inline constexpr double kWhite = 5.6508;
inline constexpr double kInverseWhite = 0.17696609329652438;

// f(t) is the cube root above kLeastCube, and up to it the line slope * t + offset. The inverse changes over at the
// cube root of that limit. Intended: line and root do not quite meet.
inline constexpr double kLeastCube = 0.008856;
inline constexpr double kLeastRoot = 0.20689303442296383;  // kLeastCube to the power kThird
inline constexpr double kSlope = 7.78;
inline constexpr double kInverseSlope = 0.12853470437017994;
inline constexpr double kOffset = 0.13793103448275862;  // 16/116
inline constexpr double kLightnessSlope = 903.29;
inline constexpr double kInverseLightnessSlope = 0.0011070641765103123;
inline constexpr double kGreatestLinearLightness = 7.999536239999999;
inline constexpr double kInverse116 = 0.008620689655172414;

struct Triple {
  double x;
  double y;
  double z;
};

[[gnu::always_inline]] inline double Mean(Triple v) { return (v.x + v.y + v.z) * kThird; }

[[gnu::always_inline]] inline Triple XyzOf(Triple linear) {
  return Triple{2.7689 * linear.x + 1.7517 * linear.y + 1.1302 * linear.z,
                linear.x + 4.5907 * linear.y + 0.0601 * linear.z, 0.0565 * linear.y + 5.5943 * linear.z};
}

// Solved from the bottom of the matrix up; nothing is cut here.
[[gnu::always_inline]] inline Triple LinearOf(Triple xyz) {
  double const b = ((xyz.x - 2.7689 * xyz.y) * 0.0565 + 10.95948923 * xyz.z) * 0.01629590105369801;
  double const g = (xyz.z - 5.5943 * b) * 17.699115044247787;
  double const r = xyz.y - 4.5907 * g - 0.0601 * b;
  return Triple{r, g, b};
}

[[gnu::always_inline]] inline double CutBelow0(double v) { return v <= 0.0 ? 0.0 : v; }

}  // namespace orb::color
