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

// Sorts places 0 .. count - 1 by their keys. Equal keys stay in the order of their places.
class ORBIMG_API RankSorter {
 public:
  // The places in their new order, valid until the next call.
  std::size_t const* Sort(std::uint64_t const* keys, std::size_t count);

 private:
  struct Keyed {
    std::uint64_t key;
    std::size_t place;
  };

  // `least` and `most` are the extremes of the keys.
  void SortPacked(std::uint64_t const* keys, std::size_t count, std::uint64_t least, std::uint64_t most, int placeBits);
  void SortKeyed(std::uint64_t const* keys, std::size_t count, std::uint64_t least, std::uint64_t most);

  std::vector<std::uint64_t> packed;
  std::vector<Keyed> keyed;
  std::vector<std::size_t> places;
};

}  // namespace orb
