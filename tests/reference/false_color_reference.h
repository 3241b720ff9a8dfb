// Plain transcription of false colours, pixel by pixel.
#pragma once

#include <orbimg/orbimg.h>

#include <vector>

namespace orb::test::reference {

struct Rgb {
  float red;
  float green;
  float blue;
};

// The 256 colours of palette 5.
std::vector<Rgb> FireTable();

// `table` holds the 256 colours of palettes 3, 4 and 5.
Rgb FalseColorOf(float value, int palette, int repeat, std::vector<Rgb> const& table);

// The value of a pixel on the palette's scale, before it is limited.
float FalseColorValueOf(COrbImage& src, int x, int y, double low, double high);

void FalseColor(COrbImage& dst, double low, double high, int palette, int repeat, std::vector<Rgb> const& table,
                COrbImage& src, CRect* rect);

}  // namespace orb::test::reference
