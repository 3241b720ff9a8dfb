// How wide stars are and how much light they have; stars out of focus are told apart.
#pragma once

#include <hosts/orbimg/aperture_measurement.h>

namespace orb::host {

struct StarMeasurement {
  Position at;
  // Full width at half maximum through the peak, pixels; 0 where the star has none that could be measured, and for a
  // ring, whose width through a peak on its rim means nothing.
  double width = 0.0;
  bool isRing = false;
  // Mean distance of the light from the position within the reach, pixels; it goes on where a width ends. 0 without
  // light.
  double spread = 0.0;
  double extent = 0.0;  // light of 3 x 3 pixels over that of the middle one; 0 at the edge
  // Disk and ring follow the width; the reach where there is none.
  ApertureCount count;
};

class StarMeter {
 public:
  // `reach`: how far from a position light is looked for, pixels.
  StarMeter(COrbImage const& frame, double reach);

  StarMeasurement Measure(Position const& at);

 private:
  // By the median of the light around circles, so that a neighbour does not count.
  bool IsRing(Position const& at, ApertureCount const& light) const;
  double SpreadOf(Position const& at, double sky) const;

  CImgPhotometry image;
  ApertureCounter counter;
  double reach;
};

}  // namespace orb::host
