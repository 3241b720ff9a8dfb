// Colour out of the mosaic of a sensor, each of whose pixels sees one of three colours.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace orb::host {

// Which plane (0 red, 1 green, 2 blue) the pixel at x, y stands for. Holds every pattern whose periods divide 48.
struct ColourPattern {
  static constexpr int kPeriod = 48;
  std::array<std::array<std::uint8_t, kPeriod>, kPeriod> planes{};  // [y][x]
  // What the black of a pixel lies above that of its plane.
  std::array<std::array<float, kPeriod>, kPeriod> excess{};

  int PlaneAt(int x, int y) const {
    return planes[static_cast<std::size_t>(y % kPeriod)][static_cast<std::size_t>(x % kPeriod)];
  }
  float ExcessAt(int x, int y) const {
    return excess[static_cast<std::size_t>(y % kPeriod)][static_cast<std::size_t>(x % kPeriod)];
  }
};

struct Mosaic {
  std::uint16_t const* samples = nullptr;
  std::ptrdiff_t pitch = 0;  // samples from row to row
  int width = 0;
  int height = 0;
  ColourPattern pattern;

  // The sample less what its black lies above that of its plane.
  double At(int x, int y) const { return static_cast<double>(samples[y * pitch + x]) - pattern.ExcessAt(x, y); }
};

// Row y of a plane, in the numbers of the sensor. Pixels of the plane keep their sample; the others take the mean of
// the plane's pixels in the smallest square around them (3, 5 or 7 pixels, cut at the edges) that has any: for a Bayer
// pattern that is bilinear interpolation. The sum is a double, in order of rows, rounded once after the division. 0
// where there are none.
void DebayerRow(Mosaic const& mosaic, int plane, int y, float* row);

}  // namespace orb::host
