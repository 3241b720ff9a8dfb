// Keys: the bits of a float, turned so that integers compare as the floats do: -0.0 before 0.0, not-a-number at the
// ends. Equal keys are equal bits, so that sorting keys leaves no choice.
#pragma once

#include <bit>
#include <cstdint>

namespace orb {

inline constexpr std::int32_t kLowestKey = INT32_MIN;
inline constexpr std::int32_t kHighestKey = INT32_MAX;

// Its own inverse.
[[gnu::always_inline]] inline std::int32_t TurnBits(std::int32_t bits) { return bits ^ ((bits >> 31) & INT32_MAX); }

[[gnu::always_inline]] inline std::int32_t KeyOf(float sample) { return TurnBits(std::bit_cast<std::int32_t>(sample)); }

[[gnu::always_inline]] inline float SampleOf(std::int32_t key) { return std::bit_cast<float>(TurnBits(key)); }

}  // namespace orb
