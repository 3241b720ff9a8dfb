// The colour model on blocks of a row: the fast twin of CColor, with roots instead of the power function.
//
// What comes out, rounded to float, differs from what CColor gives by at most one unit in the last place of the float.
// A column for which the roots' last bits could show (near gray, where a and b are differences of almost equal numbers,
// at the ends of the linear branches, near the borders of the colours that have no negative channel, for numbers that
// are not finite) is handed to CColor itself; so a gray keeps exactly the a and b, and black exactly the zeros, that
// CColor finds.
#pragma once

#include <cstddef>

#include <orbimg/core/level.h>
#include <platform/export.h>

namespace orb {

inline constexpr std::ptrdiff_t kLabBlock = 128;

// R, G, B or L, a, b of up to kLabBlock columns.
struct ColorBlock {
  double first[kLabBlock];
  double second[kLabBlock];
  double third[kLabBlock];
};

// CColor::RgbToLab. The channels are encoded, 0 to 1 by habit, and below 1e3.
ORBIMG_API void RgbToLab(ColorBlock const& rgb, std::ptrdiff_t count, ColorBlock& lab);

// The same, for L alone.
ORBIMG_API void RgbToLightness(ColorBlock const& rgb, std::ptrdiff_t count, double* lightness);

// CColor::LabToRgb; encoded channels come out.
ORBIMG_API void LabToRgb(ColorBlock const& lab, std::ptrdiff_t count, ColorBlock& rgb);

// CColor::LabToRgb with L of one colour and a, b of another.
ORBIMG_API void JoinLightnessAndChroma(ColorBlock const& lightness, ColorBlock const& chroma, std::ptrdiff_t count,
                                       ColorBlock& rgb);

// Up to where the 256-scale counts as a colour.
inline constexpr double kMostEncoded256 = 5000.0;

// From the 256-scale, limited to 0 .. most, to an encoded channel. What is not a number stays so.
[[gnu::always_inline]] inline double Encode256(double v, double most) {
  double const notBelow = v <= 0.0 ? 0.0 : v;
  return (notBelow >= most ? most : notBelow) * kInverse255;
}

void WidenRow(float const* src, std::ptrdiff_t count, double* out);

// v * 255.0 * range * (1 / 255) + min
void StoreEncodedRow(double const* v, std::ptrdiff_t count, Level to, float* dst);

}  // namespace orb
