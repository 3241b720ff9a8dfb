// Plain transcription of the colour model and of the planes made with it, colour by colour.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

struct Color {
  double r, g, b;
  double x, y, z;
  double l, a, bb;
};

Color RgbToXyz(double r, double g, double b);
Color XyzToRgb(double x, double y, double z);
Color RgbToLab(double r, double g, double b);
Color LabToRgb(double l, double a, double b);

double BrightL(double r, double g, double b);

// The new image of one (L), two (a, b) or three (L, a, b) planes.
COrbImage LPlane(COrbImage& image);
COrbImage AbPlane(COrbImage& image, int clip);
COrbImage LabPlane(COrbImage& image);

}  // namespace orb::test::reference
