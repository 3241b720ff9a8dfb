// The accelerated iteration of Richardson and Lucy, pixel by pixel, on Fft2Forward and Fft2Inverse.
#pragma once

#include <vector>

#include <orbimg/orbimg.h>

namespace orb::test::reference {

// Intended: only the first element is normalised.
std::vector<float> LucyGauss(double sigma, int width, int height);

// `acceleration` 0, 1 or 2. Returns the chi-square of the preparation and of each iteration.
std::vector<double> LucyPlane(std::vector<float>& data, int w, int h, std::vector<float> const& psf, int psfWidth,
                              int psfHeight, int iterations, double adu, double noise, int acceleration);

void Lucy(COrbImage& image, double sigma, double adu, double noise, int iterations);

}  // namespace orb::test::reference
