// The last few rows of a stage that the next stage has its window on.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace orb {

template <typename Sample>
class SlidingRows {
 public:
  SlidingRows(int count, std::size_t columns) : samples(static_cast<std::size_t>(count) * columns) {
    for (std::size_t k = 0; k < static_cast<std::size_t>(count); ++k) rows.push_back(samples.data() + k * columns);
  }

  // Moves all rows one up. Returns the last one, which holds what was the first, to be filled anew.
  Sample* Advance() {
    std::rotate(rows.begin(), rows.begin() + 1, rows.end());
    return rows.back();
  }

  // The topmost first.
  Sample* const* Rows() const { return rows.data(); }
  Sample* Row(int k) const { return rows[static_cast<std::size_t>(k)]; }

 private:
  std::vector<Sample> samples;
  std::vector<Sample*> rows;
};

}  // namespace orb
