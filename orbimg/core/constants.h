// The numbers that all rooms share, digit for digit. Results depend on their last bits: never recompute one.
#pragma once

namespace orb {

// Nearest double to 1/255. The way back from the 256-scale multiplies by it while the way there divides by the range
// and multiplies by 255.0, so the two are not exact inverses.
inline constexpr double kInverse255 = 0.00392156862745098;

// A quantity in 256ths; exactly 1/256.
inline constexpr double kInverse256 = 0.00390625;

inline constexpr double kRadiansPerDegree = 0.017453292519943295;
inline constexpr double kDegreesPerRadian = 57.29577951308232;

// Brightness of a colour.
inline constexpr double kRedWeight = 0.299;
inline constexpr double kGreenWeight = 0.587;
inline constexpr double kBlueWeight = 0.114;

}  // namespace orb
