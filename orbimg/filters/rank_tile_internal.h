// The ranks of a tile's samples among themselves.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <orbimg/filters/key_tile_internal.h>

namespace orb {

inline constexpr std::size_t kWordBits = 64;

// Every sample of the tile gets a rank of its own: equal samples are ranked in the order of their places. The ranks
// below 0.0 and those from 0.0 on are a whole word of bits apart, where zeros that are no samples of the tile have
// their place.
template <typename Rank>
class RankTile {
 public:
  void Build(KeyTile const& tile);

  // Ranks stand where the keys of the tile stand. Absent samples have a rank in the last word.
  Rank const* Ranks() const { return ranks.data(); }
  // The sample of a rank; 0.0 for the zeros' word.
  float Sample(std::size_t rank) const { return samples[rank]; }
  float const* Samples() const { return samples.data(); }
  std::size_t ZeroWord() const { return zeroWord; }
  std::size_t Words() const { return words; }

 private:
  std::vector<std::uint64_t> records;  // the key, turned so that unsigned numbers order it, above the place
  std::vector<std::uint64_t> spare;
  std::vector<Rank> ranks;
  std::vector<float> samples;
  std::size_t zeroWord = 0;
  std::size_t words = 0;
};

extern template class RankTile<std::uint16_t>;
extern template class RankTile<std::uint32_t>;

}  // namespace orb
