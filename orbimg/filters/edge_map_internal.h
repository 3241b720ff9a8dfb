// The rows around the one that the nebula smoother works on, with their edge samples marked.
#pragma once

#include <cstdint>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/filters/disk_internal.h>
#include <orbimg/filters/filter_rows.h>
#include <orbimg/filters/nebula_smooth_kernels.h>
#include <orbimg/filters/row_convolution_internal.h>
#include <orbimg/filters/sliding_rows_internal.h>

namespace orb {

// 2 radius + 1 rows, of the columns up to `radius` on each side of an area's, as far as the image has them. Columns
// that the image does not have hold its first or last one.
class EdgeMap {
 public:
  EdgeMap(COrbImage& source, int radius, Bounds const& area);

  // The row that comes next to the centre is row area.top of this plane.
  void Begin(int plane, double threshold);
  // Moves the next row to the centre.
  void Advance();

  // Row k from the topmost, at column area.left of the image; columns area.left - radius .. area.right + radius - 1.
  float const* Row(int k) const { return rows.Row(k) + radius; }

  // For each column of the area, 0 or less where an edge sample lies under the disk around it, or where it is one.
  std::int32_t const* FindEdgesUnder(Disk const& disk);
  // For each column of the area, 0 or less where an edge sample lies within `radius` columns and rows of it.
  std::int32_t const* FindEdgesAround();

 private:
  static constexpr std::int32_t kFar = 1 << 30;

  void AddRow();
  void MeasureRow(float const* row, bool hasEdges, std::int32_t* distance) const;
  bool HasEdges(int k) const { return hasEdge.Row(k)[0] != 0; }
  void Lower(int k, int reach, std::vector<std::int32_t>& nearest) const;

  COrbImage& source;
  int radius;
  Bounds area;
  RowConvolution laplacian;
  SlidingRows<float> rows;
  SlidingRows<std::int32_t> distances;  // to the nearest edge sample of the row, columns of the area
  SlidingRows<unsigned char> hasEdge;   // one a row
  std::vector<double> laplacianRow;
  std::vector<std::int32_t> nearestUnder;
  std::vector<std::int32_t> nearestAround;
  CFilterRows window;
  int plane = 0;
  double threshold = 0.0;
  int next = 0;  // row that is added next
};

}  // namespace orb
