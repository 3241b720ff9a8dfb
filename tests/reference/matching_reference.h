// Plain transcription of the image matching: the metric pixel by pixel, and the search over any metric.
#pragma once

#include <functional>

#include <orbimg/orbimg.h>

namespace orb::test::reference {

// The metric as one running sum.
double MatchingValue(COrbImage& reference, COrbImage& source, int dx, int dy, double const* ratio);
double MatchingValue(COrbImage& reference, COrbImage& source, double dx, double dy, double const* ratio);

// The metric in the order of the sum that the operator states: strips of 16 rows with 128 partial sums, folded in
// halves.
double MatchingValueInStrips(COrbImage& reference, COrbImage& source, int dx, int dy, double const* ratio);
double MatchingValueInStrips(COrbImage& reference, COrbImage& source, double dx, double dy, double const* ratio);

struct MatchingMetrics {
  std::function<double(int dx, int dy, double* ratio)> whole;
  std::function<double(double dx, double dy, double* ratio)> fractional;
};

struct MatchingTicks {
  int total = 0;
  int single = 0;   // steps of one unit
  int sixfold = 0;  // steps of six units
};

int Match(COrbImage& reference, COrbImage& source, double* x, double* y, int range, int fine,
          MatchingMetrics const& metrics, MatchingTicks* ticks);

}  // namespace orb::test::reference
