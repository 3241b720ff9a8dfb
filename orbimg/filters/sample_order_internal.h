// Samples in ascending order, as every order statistic of the filters takes them.
//
// -0.0 comes before 0.0, and what is not a number at the ends, by its sign. So the order of any samples is one and the
// same, by whatever algorithm.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace orb {

// An integer that compares as the sample does.
inline std::int32_t OrderKeyOf(float sample) {
  auto const bits = std::bit_cast<std::int32_t>(sample);
  return bits ^ ((bits >> 31) & INT32_MAX);
}

inline float SampleOf(std::int32_t key) { return std::bit_cast<float>(key ^ ((key >> 31) & INT32_MAX)); }

inline void SortSamples(float* samples, std::size_t count) {
  std::sort(samples, samples + count, [](float a, float b) { return OrderKeyOf(a) < OrderKeyOf(b); });
}

}  // namespace orb
