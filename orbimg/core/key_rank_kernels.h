// One order statistic of some ten thousand floats, by halving the range of their keys: each step counts the keys on one
// side, which goes many at a time, where a partition moves them one by one.
#pragma once

#include <cstddef>
#include <cstdint>

#include <orbimg/core/sample_key_internal.h>
#include <platform/export.h>

namespace orb {

struct KeyRange {
  std::int32_t least = kHighestKey;
  std::int32_t most = kLowestKey;
};

// Writes the keys of the samples, what is not a number becoming kHighestKey, which no number has; widens the range.
ORBIMG_API void KeysOfRow(float const* samples, std::ptrdiff_t count, std::int32_t* keys, KeyRange& range);

// The key at `rank`, 0 .. count - 1, of the keys in ascending order, all of which lie in the range. `count` is below
// 2^31.
ORBIMG_API std::int32_t KeyAtRank(std::int32_t const* keys, std::ptrdiff_t count, std::int64_t rank, KeyRange range);

}  // namespace orb
