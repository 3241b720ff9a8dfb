// Ranks of a bucket's samples by value and tie-break.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <platform/export.h>

namespace orb {

// Orders like (value, tie), by value first. `tie` is a number that rand gave, as a float, so neither negative nor above
// 2^31. -0.0 and 0.0 are one value. `value` is a number.
inline std::uint64_t RankKey(float value, float tie) {
  constexpr std::uint32_t kSign = 0x80000000u;
  // -0.0 becomes 0.0. Negative numbers have the larger bits the further they are from 0.
  std::uint32_t const bits = std::bit_cast<std::uint32_t>(value + 0.0f);
  std::uint32_t const ordered = (bits & kSign) != 0 ? ~bits : bits | kSign;
  return std::uint64_t{ordered} << 32 | static_cast<std::uint32_t>(tie);
}

// Sorts the numbers 0 .. count - 1 by keys. Equal keys stay in their order.
class ORBIMG_API RankSorter {
 public:
  // Where each number of the sorted order came from; valid until the next call.
  struct Entry {
    std::uint64_t key;
    std::size_t place;
  };
  Entry const* Sort(std::uint64_t const* keys, std::size_t count);

 private:
  std::vector<Entry> entries;
  std::vector<Entry> spare;
};

}  // namespace orb
