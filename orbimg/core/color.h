// CColor: one colour in three views, gamma-encoded RGB, CIE XYZ and CIE L*a*b*.
//
// RGB stands on the primaries of CIE 1931 (700, 546.1 and 435.8 nm) with the white of equal energy; R = G = B = 1 is
// X = Y = Z = 5.6508 and L = 100. Encoded values run from 0 to 1 by habit and are not limited. The gamma of 2.2 acts on
// the mean m = (r + g + b) / 3 of a colour, all three channels being multiplied by one factor:
//
//   linear from encoded   (R, G, B) = m^1.2 (r, g, b)            factor 1 where m < 1e-7
//   encoded from linear   (R, G, B) = m^(1/2.2 - 1) (R', G', B') likewise
//
// Intended: a gamma of each channel by itself would change their ratio, and so the hue; this one keeps it.
//
// L*a*b* after CIE 15, with t = X, Y, Z over the white's 5.6508 and linear branches for t up to 0.008856:
//
//   L = 116 ty^(1/3) - 16, or 903.29 ty      f(t) = t^(1/3), or 7.78 t + 16/116
//   a = 500 (f(tx) - f(ty))                  b = 200 (f(ty) - f(tz))
//
// Everything is in double, with the power function of the C library. Values that are not numbers or not finite go
// through as arithmetic has it. Nothing is allocated.
#pragma once

#include <platform/export.h>

class ORBIMG_API CColor {
 public:
  CColor() {}  // no member is set
  CColor(CColor const& other) = default;
  virtual ~CColor() = default;
  CColor& operator=(CColor const& other) = default;

  double GetR() const { return R; }
  double GetG() const { return G; }
  double GetB() const { return B; }
  double GetX() const { return X; }
  double GetY() const { return Y; }
  double GetZ() const { return Z; }
  double GetL() const { return L; }
  double Geta() const { return a; }
  double Getb() const { return b; }

  // Three values as they are; the other views stay.
  void SetRgb(double newR, double newG, double newB);
  void SetXyz(double newX, double newY, double newZ);
  void SetLab(double newL, double newA, double newB);

  // Fills X, Y, Z. Intended: R, G, B hold the linear values afterwards, not what was passed.
  void RgbToXyz(double r, double g, double b);
  // Stores X, Y, Z; fills R, G, B with encoded values. A linear channel at or below 0 becomes 0, after all three are
  // solved.
  void XyzToRgb(double x, double y, double z);
  // Fills X, Y, Z and L, a, b. Intended: R, G, B hold the linear values, as after RgbToXyz.
  void RgbToLab(double r, double g, double b);
  // Stores L, a, b; fills X, Y, Z, and R, G, B as XyzToRgb does.
  void LabToRgb(double l, double a, double b);

 private:
  double R;
  double G;
  double B;
  double X;
  double Y;
  double Z;
  double L;
  double a;
  double b;
};
