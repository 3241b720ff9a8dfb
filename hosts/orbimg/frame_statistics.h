// Level and noise of the sky, whatever stars, hot pixels and cosmic rays stand on it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include <orbimg/orbimg.h>

namespace orb::host {

struct SampleStatistics {
  double level = 0.0;        // median of the samples that were kept
  double noise = 0.0;        // their standard deviation, freed of what the clipping took away
  std::int64_t samples = 0;  // how many were kept
};

// Starts from the median and 1.4826 times the median absolute deviation, leaves out what lies more than 3 deviations
// off, and goes on until nothing changes. Samples that are not finite do not count. The samples are put in another
// order.
SampleStatistics ClipSamples(std::span<float> samples);

// Level of the whole rectangle, and the median of the noise of its cells of 32 x 32 pixels, so that gradients, nebulae
// and vignetting do not count as noise. Null is the whole image; without any finite sample all is 0. Needs scratch
// memory for the samples of the rectangle.
SampleStatistics MeasureSky(COrbImage const& image, int plane, CRect const* rect);

}  // namespace orb::host
