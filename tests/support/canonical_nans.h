// Which of the many bit patterns of not-a-number an operation gives is the processor's choice and depends on the order
// of its operands. Tests that mean "the same value" map all of them to one before they compare bits.
#pragma once

#include <cmath>
#include <limits>
#include <vector>

#include <tests/support/test_images.h>

namespace orb::test {

template <typename Sample>
std::vector<Sample> CanonicalNans(std::vector<Sample> samples) {
  for (Sample& v : samples) {
    if (std::isnan(v)) v = std::numeric_limits<Sample>::quiet_NaN();
  }
  return samples;
}

// Equal bit for bit, but that any not-a-number equals any other.
inline testing::AssertionResult SameValues(COrbImage const& expected, COrbImage const& actual) {
  return SameBits(CanonicalNans(SamplesOf(expected)), CanonicalNans(SamplesOf(actual)));
}

}  // namespace orb::test
