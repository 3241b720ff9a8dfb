// Samples in ascending order, as every order statistic of the filters takes them: the order of their keys.
#pragma once

#include <algorithm>
#include <cstddef>

#include <orbimg/core/sample_key_internal.h>

namespace orb {

inline void SortSamples(float* samples, std::size_t count) {
  std::sort(samples, samples + count, [](float a, float b) { return KeyOf(a) < KeyOf(b); });
}

}  // namespace orb
