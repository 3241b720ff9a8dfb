// Order statistics under a disk that moves over a plane: what every rank filter on a disk is made of.
//
// For each sample of an area, the value of a given rank among the samples under the disk around it, equal bit for bit
// to what a sort of these samples has at that place. The order is that of the keys of core/sample_key_internal.h: -0.0
// before 0.0, not-a-number with its sign bit set before all others, other not-a-number behind.
//
// Three ways lead there. The least and the largest come from running minima along the chords of the disk. Up to some
// thirty samples go through a selection network, all columns of a block at once. For larger disks the samples of a tile
// are sorted once, and a window of bits over their ranks slides from sample to sample: a step costs the samples that
// enter and leave, in proportion to the radius.
//
// A filter asks for its rows in order:
//
//   auto const medians = orb::RankUnderDisk(disk, disk.Count() / 2, rows, src->GetWidth(), run.Area());
//   for (int y = area.top; y < area.bottom; ++y) UseRow(medians->Row(y));  // columns area.left .. area.right - 1
//
// Source addresses are held while a block of rows is computed, never between two calls of Row. Scratch memory: at most
// 128 rows of the area, and a tile of 64 + 2 * reach columns and rows with some 24 bytes a sample; the tile grows to
// four times the radius where this is above 95.
#pragma once

#include <memory>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/filters/disk_internal.h>
#include <orbimg/filters/key_tile_internal.h>
#include <orbimg/filters/tile_selector_internal.h>
#include <platform/export.h>

namespace orb {

// The rows of an area, computed block by block.
class ORBIMG_API SelectedRows {
 public:
  // No tile lies across a side of `inner`. Without a selector all values are 0.0.
  SelectedRows(Disk const& disk, SourceRow rows, int width, OuterColumns outer, Bounds const& area, Bounds const& inner,
               std::unique_ptr<TileSelector> selector);
  SelectedRows(SelectedRows const&) = delete;
  SelectedRows& operator=(SelectedRows const&) = delete;

  // Row y of the area, one value a column, valid until the next call. Ask for ascending y.
  float const* Row(int y);

 private:
  void ComputeBlock(int top);

  Disk disk;
  SourceRow source;
  Bounds area;
  Bounds inner;
  std::unique_ptr<TileSelector> selector;
  TileLoader loader;
  int blockTop;
  int blockEnd;
  std::vector<float const*> sourceRows;
  std::vector<float> values;
};

// The value at `index` of the ascending samples under the disk, columns outside the plane clamped to 0 .. width - 1,
// rows outside as `rows` says, which must give one for each y from area.top - disk.Above() to area.bottom - 1 +
// disk.Below(). An index that the disk does not have gives 0.0.
ORBIMG_API std::unique_ptr<SelectedRows> RankUnderDisk(Disk const& disk, int index, SourceRow rows, int width,
                                                       Bounds const& area);

// The value at index n / 2 of the n cells of the disk that lie inside the plane, ascending, where a cell on the centre
// row or above holds its sample, and a cell below the centre row holds 0.0. `rows` is asked for y within 0 ..
// height - 1 only. 0.0 for a disk without cells.
ORBIMG_API std::unique_ptr<SelectedRows> MedianUnderUpperHalf(Disk const& disk, SourceRow rows, int width, int height,
                                                              Bounds const& area);

}  // namespace orb
