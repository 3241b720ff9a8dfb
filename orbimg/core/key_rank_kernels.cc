#include <orbimg/core/key_rank_kernels.h>

#include <algorithm>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

ORB_ROW_KERNEL std::int32_t CountUpTo(std::int32_t const* keys, std::ptrdiff_t count, std::int32_t limit) {
  std::int32_t found = 0;
  for (std::ptrdiff_t i = 0; i < count; ++i) found += keys[i] <= limit ? 1 : 0;
  return found;
}

}  // namespace

ORB_ROW_KERNEL void KeysOfRow(float const* samples, std::ptrdiff_t count, std::int32_t* keys, KeyRange& range) {
  std::int32_t least = range.least;
  std::int32_t most = range.most;
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    std::int32_t const key = samples[i] == samples[i] ? KeyOf(samples[i]) : kHighestKey;
    keys[i] = key;
    least = std::min(least, key);
    most = std::max(most, key);
  }
  range = KeyRange{least, most};
}

std::int32_t KeyAtRank(std::int32_t const* keys, std::ptrdiff_t count, std::int64_t rank, KeyRange range) {
  std::int64_t low = range.least;
  std::int64_t high = range.most;
  while (low < high) {
    std::int64_t const middle = low + (high - low) / 2;
    if (CountUpTo(keys, count, static_cast<std::int32_t>(middle)) > rank) {
      high = middle;
    } else {
      low = middle + 1;
    }
  }
  return static_cast<std::int32_t>(low);
}

}  // namespace orb
