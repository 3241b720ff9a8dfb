// Plain transcriptions of the transformed sampler and of the rectangle copy.
#pragma once

#include <orbimg/orbimg.h>

namespace orb::test::reference {

struct Placement {
  int x;
  int y;
  double dx;
  double dy;
  double sinA;
  double cosA;
  double scale;
};

struct Position {
  double x;
  double y;
};
Position SourcePosition(COrbImage& image, Placement const& at);

struct Sampled {
  bool outside;
  Position position;
  float value;
};
Sampled Gray256f(COrbImage& image, Placement const& at, int plane, double outside, bool nearest);
Sampled GrayRaw(COrbImage& image, Placement const& at, int plane, double outside, bool nearest);

struct SampledRgb {
  bool outside;
  Position position;
  double r;
  double g;
  double b;
};
SampledRgb Rgb256f(COrbImage& image, Placement const& at, double outside);
SampledRgb RgbRaw(COrbImage& image, Placement const& at, double outside);

void PixelBlt(COrbImage& dst, int dstX, int dstY, int width, int height, COrbImage& src, int srcX, int srcY,
              bool convert);

}  // namespace orb::test::reference
