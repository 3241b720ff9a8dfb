// The medians of a line over its frames, a block of columns at a time, with one selection network for all columns.
//
// A column that only n of N frames cover gets fillers for the gaps: N / 2 - n / 2 of them below all values and the
// others above, which puts the value of index n / 2 at index N / 2, where the network looks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include <orbimg/core/selection_network_internal.h>
#include <orbimg/stacking/frame_line_internal.h>
#include <orbimg/stacking/median_composite_kernels.h>

namespace orb {

using FrameLines = std::span<std::unique_ptr<FrameLine> const>;

class LineMedian {
 public:
  // The medians of a plane; 0 where no frame has a sample.
  void Compute(FrameLines lines, int plane, std::ptrdiff_t columns, float* out);

 private:
  struct Interval {
    std::ptrdiff_t begin;
    std::ptrdiff_t end;
  };

  struct Block {
    FrameLines lines;
    int plane;
    std::ptrdiff_t begin;
    std::ptrdiff_t end;

    std::ptrdiff_t Columns() const { return end - begin; }
    Interval Inside(FrameLine const& line) const;
  };

  struct alignas(64) Keys {
    KeyRow row;
  };

  void Prepare(FrameLines lines, int plane);
  void CountLines(Block const& block);
  void LoadWithGaps(Block const& block);

  std::optional<SelectionNetwork> network;
  std::vector<Keys> keys;
  KeyRow counts = {};                // of lines with a sample in a column, where a block has gaps
  KeyRow lows = {};                  // fillers still to come below all values
  std::vector<float const*> starts;  // of the lines' samples
  std::vector<std::uintptr_t> soon;  // memory that the next line will read
};

}  // namespace orb
