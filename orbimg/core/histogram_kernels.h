// Counting values into classes, a row at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orb {

// Counts values v with lo <= v <= hi into `bins` classes, the class being (v - lo) / (hi - lo) * bins truncated and
// held in 0 .. bins - 1. Where that is not a number, as with lo == hi, the class is 0. `bins` is at least 1.
//
// Holds one to four tables of `bins` counters: a sky's samples fall into few classes, and neighbours that count into
// the same place would wait for each other.
class Histogram {
 public:
  Histogram(int bins, double lo, double hi);

  void CountRow(float const* values, std::ptrdiff_t count);
  void CountRow(double const* values, std::ptrdiff_t count);

  // Writes the counts; one beyond the range of int stays at its end.
  void Store(int* counts) const;

 private:
  template <typename T>
  void CountChunks(T const* values, std::ptrdiff_t count);
  void CountClasses(int const* classes, std::ptrdiff_t count);

  int bins;
  double lo;
  double hi;
  int tables;
  std::size_t stride;                   // of a table: its last entry takes the values outside lo .. hi
  std::vector<std::uint32_t> counters;  // table after table
};

// Brightness of each pixel on the 256-scale, for the histogram:
//   v = 0.587 * (G - min1) * s1 + 0.114 * (B - min2) * s2 + 0.299 * (R - min0) * s0, s = 255.0 / range
// Intended: min and s are floats, unlike everywhere else.
struct FloatScale {
  float min;
  float scale;
};
void HistogramBrightnessRow(float const* red, float const* green, float const* blue, std::ptrdiff_t count, FloatScale r,
                            FloatScale g, FloatScale b, double* brightness);

}  // namespace orb
