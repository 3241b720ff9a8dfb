// How wide stars are: the blur that a restoration has to take away.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <hosts/orbimg/environment.h>
#include <hosts/orbimg/star_finder.h>
#include <orbimg/orbimg.h>

namespace orb::host {

struct StarWidth {
  double sigma = 0.0;  // pixels, of the gaussian that fits a star best: a quarter of the stars is narrower
  int stars = 0;       // that were measured

  double Fwhm() const { return 2.3548200450309493 * sigma; }
  // "57 stars", "1 star"
  std::string StarsText() const { return std::to_string(stars) + (stars == 1 ? " star" : " stars"); }
};

// Sigma, in pixels, of the gaussian that fits a star best, by the moments of its first plane under a gaussian weight
// that is made as wide as the star itself: noise and far wings count little. The sky of `clean` is 0. Nothing where
// that comes to no end within the image, or leaves the star.
std::optional<double> MeasureSigma(COrbImage const& clean, Position const& star);

// Of the fifty brightest stars, without those near the brightest peak, which may be saturated, and those below a
// fiftieth of it; of fewer than five the brightest alone. The width is one that a quarter of them falls below, because
// galaxies, knots and pairs, which pass for stars, are wider than stars are. No stars: 0 of them.
StarWidth MeasureStarWidth(COrbImage const& image, std::vector<Star> const& stars);

// The same with the stars from a file: a table of stars (.json, as orbimg stars --json prints it; .csv or .txt, lines
// that begin with x and y) for places in `image`, whose file is `imageFile`; or an image, whose own stars are measured.
// HostError where there is no star that can be measured.
StarWidth MeasureBlur(std::string const& from, COrbImage const& image, std::string const& imageFile);

}  // namespace orb::host
