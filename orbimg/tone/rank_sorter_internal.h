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

// Ranks keys. Equal keys keep their order.
class ORBIMG_API RankSorter {
 public:
  // Each key becomes its rank among them, counted from `first`.
  void Rank(std::uint64_t* keys, std::size_t count, std::uint64_t first);

 private:
  struct Keyed {
    std::uint64_t key;
    std::size_t place;
  };

  // `least` and `most` are the extremes of the keys.
  void RankPacked(std::uint64_t* keys, std::size_t count, std::uint64_t least, std::uint64_t most, int placeBits,
                  std::uint64_t first);
  void RankKeyed(std::uint64_t* keys, std::size_t count, std::uint64_t least, std::uint64_t most, std::uint64_t first);

  std::vector<std::uint64_t> packed;
  std::vector<Keyed> keyed;
};

}  // namespace orb
