// The numbers that describe an image.
#pragma once

#include <cstdint>
#include <vector>

#include <hosts/orbimg/frame_statistics.h>
#include <orbimg/orbimg.h>

namespace orb::host {

struct PlaneSummary {
  double black = 0.0;
  double white = 0.0;
  double min = 0.0;  // of the finite samples, as are the next three; all 0 if there are none
  double max = 0.0;
  double mean = 0.0;
  double deviation = 0.0;
  double median = 0.0;  // index n / 2 of the sorted samples
  std::int64_t nonFinite = 0;
  SampleStatistics sky;
};

// Needs scratch memory for one plane.
PlaneSummary SummarizePlane(COrbImage const& image, int plane);

}  // namespace orb::host
