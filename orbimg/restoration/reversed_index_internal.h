// ReversedIndex: steps through 0 .. n - 1 with the binary digits of the index in reverse.
#pragma once

#include <cstddef>

namespace orb {

class ReversedIndex {
 public:
  // `length` is a power of two.
  explicit ReversedIndex(std::ptrdiff_t length) : top(length >> 1) {}

  std::ptrdiff_t Value() const { return index; }
  void Next() {
    std::ptrdiff_t bit = top;
    while (bit != 0 && (index & bit) != 0) {
      index ^= bit;
      bit >>= 1;
    }
    index |= bit;
  }

 private:
  std::ptrdiff_t const top;
  std::ptrdiff_t index = 0;
};

}  // namespace orb
