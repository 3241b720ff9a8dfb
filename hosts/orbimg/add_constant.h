// Brings samples to another level.
#pragma once

#include <cstdint>

namespace orb::host {

inline void AddConstant(float* samples, std::int64_t count, double constant) {
  for (std::int64_t i = 0; i < count; ++i) samples[i] = static_cast<float>(samples[i] + constant);
}

}  // namespace orb::host
