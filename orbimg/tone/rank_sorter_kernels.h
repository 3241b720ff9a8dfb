// What the sorting of ranks does over many keys at once.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orb {

struct KeyRange {
  std::uint64_t least;
  std::uint64_t most;
};

// Of one key at least.
KeyRange RangeOfKeys(std::uint64_t const* keys, std::ptrdiff_t count);

}  // namespace orb
