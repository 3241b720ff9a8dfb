// Samples that may differ in the last place of a float: roots in place of the power function, no more.
#pragma once

#include <cmath>
#include <limits>
#include <vector>

#include <tests/support/test_images.h>

namespace orb::test {

// Whether two floats are the same or neighbours, or differ by no more than one unit in the last place of `atLeast`.
// Any not-a-number is like any other; a 0.0 is not like a -0.0.
inline bool IsWithinOneUnit(float expected, float actual, float atLeast = 0.0f) {
  if (std::isnan(expected) || std::isnan(actual)) return std::isnan(expected) && std::isnan(actual);
  if (expected == actual) return std::signbit(expected) == std::signbit(actual);
  if (std::nextafter(expected, actual) == actual) return true;
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  double const size = std::fabs(static_cast<double>(atLeast));
  if (size == 0.0 || !(size < kInfinity)) return false;
  double const unit = std::ldexp(1.0, std::ilogb(size) - 23);
  return std::fabs(static_cast<double>(expected) - actual) <= unit;
}

// Every sample within one unit, of the larger of itself and `atLeast(plane)`.
template <typename AtLeast>
testing::AssertionResult SameWithinOneUnit(COrbImage const& expected, COrbImage const& actual, AtLeast atLeast) {
  if (expected.GetWidth() != actual.GetWidth() || expected.GetHeight() != actual.GetHeight() ||
      expected.GetPlanes() != actual.GetPlanes()) {
    return testing::AssertionFailure() << "shapes differ";
  }
  std::vector<float> const e = SamplesOf(expected);
  std::vector<float> const a = SamplesOf(actual);
  std::size_t const plane = e.empty() ? 1 : e.size() / static_cast<std::size_t>(expected.GetPlanes());
  for (std::size_t i = 0; i < e.size(); ++i) {
    if (IsWithinOneUnit(e[i], a[i], atLeast(static_cast<int>(i / plane)))) continue;
    return testing::AssertionFailure() << "sample " << i << ": expected " << e[i] << ", found " << a[i]
                                       << ", difference " << a[i] - e[i];
  }
  return testing::AssertionSuccess();
}

inline testing::AssertionResult SameWithinOneUnit(COrbImage const& expected, COrbImage const& actual) {
  return SameWithinOneUnit(expected, actual, [](int) { return 0.0f; });
}

// For samples that are sums with levelMin.
inline testing::AssertionResult SameWithinOneUnitOfLevels(COrbImage const& expected, COrbImage const& actual) {
  return SameWithinOneUnit(expected, actual, [&](int p) { return static_cast<float>(expected.GetLevelMin(p)); });
}

}  // namespace orb::test
