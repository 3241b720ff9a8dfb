#include <orbimg/core/cell_row_kernels.h>

#include <orbimg/core/bilinear_internal.h>

namespace orb {

namespace {

// Columns that are gathered before they are interpolated, so that only the gathering goes column by column.
constexpr std::ptrdiff_t kBlock = 64;

template <typename Sample>
[[gnu::always_inline]] inline void InterpolateCells(CellsOfRow const& cells, double const* fractionX,
                                                    double const* fractionY, std::ptrdiff_t count, Sample* out) {
  Neighbours above[kBlock];
  Neighbours below[kBlock];
  for (std::ptrdiff_t first = 0; first < count; first += kBlock) {
    std::ptrdiff_t const n = std::min(kBlock, count - first);
    cells.AskAhead(first, n);
    cells.Gather(first, n, above, below);
    double const* const fx = fractionX + first;
    double const* const fy = fractionY + first;
    Sample* const o = out + first;
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t i = 0; i < n; ++i) {
      double const f = fx[i];
      double const g = fy[i];
      double const a0 = above[i].left;
      double const between = InterpolateCell(a0, above[i].right, below[i].left, below[i].right, f, g);
      // Neither fraction is negative, so their sum is 0 only where both are.
      o[i] = static_cast<Sample>(f + g == 0.0 ? a0 : between);
    }
  }
}

}  // namespace

ORB_ROW_KERNEL void InterpolateCellsRow(CellsOfRow const& cells, double const* fractionX, double const* fractionY,
                                        std::ptrdiff_t count, float* out) {
  InterpolateCells(cells, fractionX, fractionY, count, out);
}

ORB_ROW_KERNEL void InterpolateCellsRow(CellsOfRow const& cells, double const* fractionX, double const* fractionY,
                                        std::ptrdiff_t count, double* out) {
  InterpolateCells(cells, fractionX, fractionY, count, out);
}

}  // namespace orb
