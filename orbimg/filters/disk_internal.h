// The cells of a round mask: one chord of columns for each row.
#pragma once

#include <vector>

#include <platform/export.h>

namespace orb {

class ORBIMG_API Disk {
 public:
  // The cells (dx, dy) with dx and dy in -radius .. radius and dx^2 + dy^2 <= range^2. A `range` that is no number:
  // none. More cells in the square than an int counts are std::bad_alloc, as lack of memory is.
  Disk(int radius, double range);

  // The rows above the centre row, and that row.
  Disk UpperHalf() const;

  int Count() const;
  // Columns on each side of the centre, rows above and below it.
  int Reach() const { return reach; }
  int Above() const { return above; }
  int Below() const { return below; }
  // Row dy, from -Above() to Below(), covers the columns -HalfWidth(dy) .. HalfWidth(dy).
  int HalfWidth(int dy) const { return halfWidths[static_cast<std::size_t>(dy < 0 ? -dy : dy)]; }
  // Column dx covers the rows -HalfHeight(dx) .. HalfHeight(dx), but none below Below().
  int HalfHeight(int dx) const { return HalfWidth(dx); }

 private:
  std::vector<int> halfWidths;  // by |dy|; empty: no cell at all
  int reach = 0;
  int above = 0;
  int below = 0;
};

}  // namespace orb
