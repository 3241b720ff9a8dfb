// Sums over rows of samples, in interleaved partial sums.
//
// Sample x of a row goes to partial sum x modulo 16; the partial sums are added up in a fixed order at the end. Every
// machine adds in the same order and gets the same bits. The result differs from that of one running sum in the last
// bits of a double only, and has the smaller error of the two.
#pragma once

#include <cstddef>

namespace orb {

class LaneSum {
 public:
  static constexpr int kLanes = 16;

  void AddRow(float const* values, std::ptrdiff_t count);
  void AddRow(double const* values, std::ptrdiff_t count);
  // Adds (v - mean) * (v - mean) for each value.
  void AddSquaredDeviations(float const* values, std::ptrdiff_t count, double mean);
  void AddSquaredDeviations(double const* values, std::ptrdiff_t count, double mean);

  double Total() const;

 private:
  double lanes[kLanes] = {};
};

}  // namespace orb
