// Finds the stars of a frame, calibrated or raw.
//
// 1. The sky is taken away and spikes are mended, as clean_frame.h says. A colour image counts with the mean of its
//    planes. A star must be about 1.5 pixels wide to pass.
// 2. On a copy smoothed by binomial weights every local maximum above `threshold` times the local noise counts. Ridges
// do
//    not (satellite trails, plateaus): maxima with half as much light on two opposite sides.
// 3. COrbImage::GetCenterOfGravity refines the position on the smoothed copy, in a square that follows the star.
// 4. On the copy that is not smoothed, flux is the sum within a circle, peak the largest sample near the middle, and
//    width what PSF finds there.
//
// Scratch memory: three float planes.
#pragma once

#include <optional>
#include <vector>

#include <hosts/orbimg/frame_transform.h>
#include <orbimg/orbimg.h>

namespace orb::host {

struct StarFinderSettings {
  double threshold = 5.0;            // times the noise of the smoothed sky
  int cellSide = 64;                 // pixels: the mesh of the sky
  int smoothing = 1;                 // passes of the binomial weights
  int radius = 5;                    // pixels: half the side of the square of the centroid
  double aperture = 6.0;             // pixels: radius of the circle of the flux
  std::optional<double> saturation;  // raw: stars with a sample at or above it are left out
  int maxStars = 0;                  // keeps the brightest; 0 keeps all
};

struct Star {
  double x = 0.0;  // pixels, middles of pixels at whole numbers, row 0 on top
  double y = 0.0;
  double peak = 0.0;   // raw units above the sky
  double flux = 0.0;   // raw units above the sky
  double width = 0.0;  // pixels: full width at half maximum; 0 where none could be measured
};

// Sorted by falling flux. Stars nearer to the edge than the square or the circle needs are left out.
std::vector<Star> FindStars(COrbImage const& image, StarFinderSettings const& settings);

std::vector<Position> PositionsOf(std::vector<Star> const& stars);

}  // namespace orb::host
