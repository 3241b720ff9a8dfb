// Random numbers with the same bits on every machine: only exact operations and the four correctly rounded ones go into
// them, never a function of the system's mathematics library.
#pragma once

#include <cstdint>

namespace orb::host {

// Natural logarithm of a positive normal number, to about one unit in the last place of a double.
double PortableLog(double x);

class RandomSource {
 public:
  // Different streams of one seed are independent, whatever the order in which they are used.
  RandomSource(std::uint64_t seed, std::uint64_t stream);

  std::uint64_t Next();
  double Uniform();  // above 0 and below 1
  double Uniform(double low, double high) { return low + (high - low) * Uniform(); }
  double Normal();            // mean 0, deviation 1
  double Count(double mean);  // of events, Poisson; above a mean of 20 the normal distribution, unrounded

 private:
  std::uint64_t state;
  double spare = 0.0;
  bool hasSpare = false;
};

}  // namespace orb::host
