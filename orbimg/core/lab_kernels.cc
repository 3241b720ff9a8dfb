#include <orbimg/core/lab_kernels.h>

#include <algorithm>
#include <cmath>

#include <orbimg/core/color.h>
#include <orbimg/core/color_model_internal.h>
#include <orbimg/core/inverse_root_internal.h>
#include <orbimg/core/row_kernel.h>

namespace {

using namespace orb::color;
using orb::ColorBlock;
using orb::kLabBlock;

// Not 0 where a column must be done by CColor.
struct Doubts {
  double column[kLabBlock] = {};
};

// fx + fy + fz of the colour that a and b come from: their rounding errors are in proportion to it. 0 for a and b that
// are exact.
struct Roots {
  double sum[kLabBlock] = {};
};

// How close a number may come to a step of the model before its last bits matter. Its error is below 1e-13.
constexpr double kStepMargin = 1e-9;

[[gnu::always_inline]] inline bool IsOff(double v, double step) { return std::fabs(v - step) >= kStepMargin; }

// X, Y, Z over the white's, from encoded channels. z is about m^(-1/5): m^(6/5) = (m z^2)^2.
[[gnu::always_inline]] inline Triple ToWhiteUnits(Triple rgb, double z) {
  double const m = Mean(rgb);
  z = orb::ImproveInverseRoot<5>(m, z);
  double const root = m * z * z;
  double const k = m >= kLeastMean ? root * root : 1.0;
  Triple const xyz = XyzOf(Triple{k * rgb.x, k * rgb.y, k * rgb.z});
  return Triple{xyz.x * kInverseWhite, xyz.y * kInverseWhite, xyz.z * kInverseWhite};
}

// z is about t^(-1/3).
[[gnu::always_inline]] inline double RootOrLine(double t, double z) {
  z = orb::ImproveInverseRoot<3>(t, z);
  return t > kLeastCube ? t * z * z : kSlope * t + kOffset;
}

[[gnu::always_inline]] inline double Lightness(double ty, double fy) {
  return ty > kLeastCube ? 116 * fy - 16 : kLightnessSlope * ty;
}

[[gnu::always_inline]] inline Triple At(ColorBlock const& block, std::ptrdiff_t i) {
  return Triple{block.first[i], block.second[i], block.third[i]};
}

[[gnu::always_inline]] inline void Put(Triple v, std::ptrdiff_t i, ColorBlock& block) {
  block.first[i] = v.x;
  block.second[i] = v.y;
  block.third[i] = v.z;
}

[[gnu::always_inline]] inline void ToWhiteUnitsBlock(ColorBlock const& rgb, std::ptrdiff_t count, ColorBlock& t) {
  double m[kLabBlock];
  float z[kLabBlock];
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) m[i] = Mean(At(rgb, i));
  orb::GuessInverseRoots<5>(m, count, z);
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) Put(ToWhiteUnits(At(rgb, i), z[i]), i, t);
}

ORB_ROW_KERNEL void RgbToLightnessRow(ColorBlock const& rgb, std::ptrdiff_t count, double* lightness, Doubts& doubts) {
  ColorBlock t;
  float z[kLabBlock];
  ToWhiteUnitsBlock(rgb, count, t);
  orb::GuessInverseRoots<3>(t.second, count, z);
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const ty = t.second[i];
    lightness[i] = Lightness(ty, RootOrLine(ty, z[i]));
    doubts.column[i] += IsOff(ty, kLeastCube) ? 0.0 : 1.0;
  }
}

ORB_ROW_KERNEL void RgbToLabRow(ColorBlock const& rgb, std::ptrdiff_t count, ColorBlock& lab, Roots& roots,
                                Doubts& doubts) {
  ColorBlock t;
  float zx[kLabBlock];
  float zy[kLabBlock];
  float zz[kLabBlock];
  ToWhiteUnitsBlock(rgb, count, t);
  orb::GuessInverseRoots<3>(t.first, count, zx);
  orb::GuessInverseRoots<3>(t.second, count, zy);
  orb::GuessInverseRoots<3>(t.third, count, zz);
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const fx = RootOrLine(t.first[i], zx[i]);
    double const fy = RootOrLine(t.second[i], zy[i]);
    double const fz = RootOrLine(t.third[i], zz[i]);
    Put(Triple{Lightness(t.second[i], fy), (fx - fy) * 500.0, (fy - fz) * 200.0}, i, lab);
    roots.sum[i] = fx + fy + fz;
    bool const isSure = IsOff(t.first[i], kLeastCube) & IsOff(t.second[i], kLeastCube) & IsOff(t.third[i], kLeastCube);
    doubts.column[i] += isSure ? 0.0 : 1.0;
  }
}

// a and b near 0 are left with the last bits of the roots. 2^-20: a float's 2^-24, less the roots' few units.
ORB_ROW_KERNEL void DoubtGraysRow(ColorBlock const& lab, Roots const& roots, std::ptrdiff_t count, Doubts& doubts) {
  constexpr double kLeast = 200.0 / (1 << 20);
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const least = kLeast * roots.sum[i];
    bool const isSure = (std::fabs(lab.second[i]) >= least) & (std::fabs(lab.third[i]) >= least);
    doubts.column[i] += isSure ? 0.0 : 1.0;
  }
}

struct LightnessRoot {
  double ty;
  double fy;
};

// Where Y is a cube, its root is what was cubed.
[[gnu::always_inline]] inline LightnessRoot RootOfLightness(double l) {
  double const f = (l + 16.0) * kInverse116;
  double const ty = l <= kGreatestLinearLightness ? l * kInverseLightnessSlope : f * f * f;
  return LightnessRoot{ty, ty <= kLeastCube ? kSlope * ty + kOffset : f};
}

[[gnu::always_inline]] inline double CubeOrLine(double f) {
  return f <= kLeastRoot ? (f - kOffset) * kInverseSlope : f * f * f;
}

// A linear channel carries an error of up to fmax^2 (1.5e-13 fmax + 3.4e-14 (fy + roots)). The first term is what the
// back substitution rounds, the second what the roots of the two colours differ by from powers. Below 2^28 times that
// the error could show in a float, and whether the channel is cut at 0 could hang on it.
constexpr double kLeastOfSolving = 4e-05;
constexpr double kLeastOfRoots = 1e-05;

ORB_ROW_KERNEL void LabToRgbRow(ColorBlock const& lab, Roots const& roots, std::ptrdiff_t count, ColorBlock& rgb,
                                Doubts& doubts) {
  constexpr double kMeanOfSmall = 1e-06;  // the step at kLeastMean, and more
  constexpr double kMeanOfLarge = 1e+24;
  double m[kLabBlock];
  float guess[kLabBlock];
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const l = lab.first[i];
    auto const [ty, fy] = RootOfLightness(l);
    double const fx = lab.second[i] * 0.002 + fy;
    double const fz = fy - lab.third[i] * 0.005;
    Triple const solved = LinearOf(Triple{kWhite * CubeOrLine(fx), kWhite * ty, kWhite * CubeOrLine(fz)});
    Triple const linear{CutBelow0(solved.x), CutBelow0(solved.y), CutBelow0(solved.z)};
    m[i] = Mean(linear);
    Put(linear, i, rgb);
    double const greatest = std::max(std::max(std::fabs(fx), std::fabs(fy)), std::fabs(fz));
    double const least =
        greatest * greatest * (kLeastOfSolving * greatest + kLeastOfRoots * (std::fabs(fy) + roots.sum[i]));
    bool const isSure = (std::fabs(solved.x) >= least) & (std::fabs(solved.y) >= least) &
                        (std::fabs(solved.z) >= least) & IsOff(ty, kLeastCube) & IsOff(l, kGreatestLinearLightness) &
                        IsOff(fx, kLeastRoot) & IsOff(fz, kLeastRoot) & (m[i] >= kMeanOfSmall) & (m[i] <= kMeanOfLarge);
    doubts.column[i] += isSure ? 0.0 : 1.0;
  }
  orb::GuessInverseRoots<11>(m, count, guess);
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const k = orb::Power<6>(orb::ImproveInverseRoot<11>(m[i], static_cast<double>(guess[i])));  // m^(-6/11)
    rgb.first[i] *= k;
    rgb.second[i] *= k;
    rgb.third[i] *= k;
  }
}

template <typename Plainly>
void EachDoubtful(Doubts const& doubts, std::ptrdiff_t count, Plainly plainly) {
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    if (doubts.column[i] != 0.0) plainly(i);
  }
}

CColor LabOf(ColorBlock const& rgb, std::ptrdiff_t i) {
  CColor color;
  color.RgbToLab(rgb.first[i], rgb.second[i], rgb.third[i]);
  return color;
}

CColor RgbOf(double l, double a, double b) {
  CColor color;
  color.LabToRgb(l, a, b);
  return color;
}

void PutRgb(CColor const& color, std::ptrdiff_t i, ColorBlock& rgb) {
  Put(Triple{color.GetR(), color.GetG(), color.GetB()}, i, rgb);
}

}  // namespace

namespace orb {

void RgbToLab(ColorBlock const& rgb, std::ptrdiff_t count, ColorBlock& lab) {
  Roots roots;
  Doubts doubts;
  RgbToLabRow(rgb, count, lab, roots, doubts);
  DoubtGraysRow(lab, roots, count, doubts);
  EachDoubtful(doubts, count, [&](std::ptrdiff_t i) {
    CColor const color = LabOf(rgb, i);
    Put(Triple{color.GetL(), color.Geta(), color.Getb()}, i, lab);
  });
}

void RgbToLightness(ColorBlock const& rgb, std::ptrdiff_t count, double* lightness) {
  Doubts doubts;
  RgbToLightnessRow(rgb, count, lightness, doubts);
  EachDoubtful(doubts, count, [&](std::ptrdiff_t i) { lightness[i] = LabOf(rgb, i).GetL(); });
}

void LabToRgb(ColorBlock const& lab, std::ptrdiff_t count, ColorBlock& rgb) {
  Doubts doubts;
  LabToRgbRow(lab, Roots(), count, rgb, doubts);
  EachDoubtful(doubts, count,
               [&](std::ptrdiff_t i) { PutRgb(RgbOf(lab.first[i], lab.second[i], lab.third[i]), i, rgb); });
}

void JoinLightnessAndChroma(ColorBlock const& lightness, ColorBlock const& chroma, std::ptrdiff_t count,
                            ColorBlock& rgb) {
  ColorBlock lab;
  Roots roots;
  Doubts doubts;
  RgbToLabRow(chroma, count, lab, roots, doubts);
  RgbToLightnessRow(lightness, count, lab.first, doubts);
  LabToRgbRow(lab, roots, count, rgb, doubts);
  EachDoubtful(doubts, count, [&](std::ptrdiff_t i) {
    CColor const color = LabOf(chroma, i);
    PutRgb(RgbOf(LabOf(lightness, i).GetL(), color.Geta(), color.Getb()), i, rgb);
  });
}

ORB_ROW_KERNEL void WidenRow(float const* src, std::ptrdiff_t count, double* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) out[i] = src[i];
}

ORB_ROW_KERNEL void StoreEncodedRow(double const* v, std::ptrdiff_t count, Level to, float* dst) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    dst[i] = static_cast<float>(v[i] * 255.0 * to.range * kInverse255 + to.min);
  }
}

}  // namespace orb
