// Star lists and frames for the tests of finding, matching and aligning.
#pragma once

#include <vector>

#include <hosts/orbimg/frame_transform.h>
#include <orbimg/orbimg.h>

namespace orb::test {

// Random positions within a frame.
std::vector<host::Position> RandomPositions(unsigned seed, int count, double width, double height);

// Where the transform has the positions in a frame, off by normal errors (pixels).
std::vector<host::Position> MoveToFrame(std::vector<host::Position> const& reference,
                                        host::FrameTransform const& transform, double error, unsigned seed);

// A mono frame of an even sky with normal noise.
COrbImage SkyImage(int width, int height, double level, double noise, unsigned seed);

// Adds a Gaussian star, the samples being those at the pixels' middles.
void AddGaussian(COrbImage& image, double x, double y, double peak, double fwhm);

}  // namespace orb::test
