// Plain transcriptions of the single-sample forms: raw samples and level pairs in, one number out.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

// (raw - levelMin) / levelRange * 255.0, unrounded.
double To256(COrbImage const& image, double raw, int plane);

// levelRange * v * (1 / 255) + levelMin, unrounded.
double ToRaw(COrbImage const& image, double v, int plane);

// 0 where levelMin >= raw, else 255 where levelMax <= raw, else the 256-scale truncated.
unsigned char ToByte(COrbImage const& image, double raw, int plane);

// The 256-scale truncated and cut to its low 8 bits. `v` lies within the range of an int.
unsigned char WrapToByte(double v);

// The stored sample, widened.
double Sample(COrbImage& image, int x, int y, int plane);

// Interpolated between four neighbours, held at the last column and row; unrounded. At least 2 x 2 samples, x and y not
// below 0.
double Bilinear(COrbImage& image, double x, double y, int plane);

// 256-scale brightness of a pixel, unrounded; a mono image is its own brightness.
double Bright256(COrbImage& image, int x, int y);

}  // namespace orb::test::reference
