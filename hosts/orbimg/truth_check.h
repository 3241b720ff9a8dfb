// How well frames that came out of a simulation agree with its truth.
#pragma once

#include <vector>

#include <hosts/orbimg/alignment_file.h>
#include <hosts/orbimg/simulation.h>
#include <orbimg/orbimg.h>

namespace orb::host {

// Root mean square, over a grid of positions of the frame, of the distance between where the found transform and the
// true one put them [pixels].
double FindTransformError(FrameTransform const& found, FrameTransform const& truth, int width, int height);

struct SpikeCount {
  int pixels = 0;  // looked at
  int spikes = 0;  // that stand out
};

// Counts the positions at which a sample stands more than `limit` above the brightest of its eight neighbours.
// Positions within a few pixels of a bright star or of the edge are left out.
SpikeCount CountSpikes(COrbImage const& image, std::vector<Position> const& positions,
                       std::vector<SimulatedStar> const& stars, double limit);

// How much brighter the image is along a line than beside it: the median of the samples on the line less the median of
// those 10 pixels to either side.
double FindLineExcess(COrbImage const& image, Position const& from, Position const& to);

}  // namespace orb::host
