// A window of bits over the ranks of a tile, sliding along a row.
//
// A bit stands for each rank, set while its sample is under the mask. A pivot word remembers how many set bits lie
// before it, and follows the wanted rank a word or two a step. One word stands for a number of zeros that are no
// samples of the tile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orb {

// Places that come under the mask in a step, relative to its new centre, and those that leave it, relative to the old
// one; as many of one as of the other.
struct StepEdges {
  std::vector<std::ptrdiff_t> enter;
  std::vector<std::ptrdiff_t> leave;
};

struct RankWindow {
  std::vector<std::uint64_t> words;
  std::size_t zeroWord = 0;
  std::int64_t zeros = 0;
  std::size_t pivot = 0;
  std::int64_t before = 0;  // set bits and zeros in the words before the pivot
};

// What the columns of a row ask for.
struct RowWishes {
  std::vector<std::int64_t> index;  // among the samples under the mask and the zeros; there are more than that
  std::vector<std::int64_t> zeros;
};

// The row's columns in the order in which the window passes over them.
struct RowPath {
  std::ptrdiff_t first;  // index of the first column, in the wishes and in the results
  std::ptrdiff_t count;
  std::ptrdiff_t step;  // 1 or -1
};

// Moves the window from one centre to another.
void StepWindow(RankWindow& window, StepEdges const& edges, std::uint16_t const* from, std::uint16_t const* to);
void StepWindow(RankWindow& window, StepEdges const& edges, std::uint32_t const* from, std::uint32_t const* to);

// The window stands at the first column, whose rank is at `centre`; it ends at the last. samples[rank] of the rank that
// each column wishes for goes to out.
void SlideRow(RankWindow& window, StepEdges const& edges, std::uint16_t const* centre, RowPath const& path,
              RowWishes const& wishes, float const* samples, float* out);
void SlideRow(RankWindow& window, StepEdges const& edges, std::uint32_t const* centre, RowPath const& path,
              RowWishes const& wishes, float const* samples, float* out);

}  // namespace orb
