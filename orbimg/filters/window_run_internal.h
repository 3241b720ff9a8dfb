// The walk of a filter over one plane: for each row the destination's samples and a window of the source.
#pragma once

#include <orbimg/core/operator_run.h>
#include <orbimg/filters/filter_rows.h>
#include <orbimg/filters/window_rows_internal.h>

namespace orb {

// Columns left .. right - 1 of row y, none where left >= right. dst[0] belongs to column `left`, the window's rows
// begin at column 0.
struct WindowRow {
  CFilterRows& window;
  float* dst;
  int left;
  int right;
  int y;
  int plane;

  // The source's sample of column `left`.
  float const* Centre() const { return window.rows[static_cast<std::size_t>(window.radius)] + left; }
  std::ptrdiff_t Count() const { return right - left; }
};

// Calls formula(WindowRow) for each row of the run, and ticks after each. All rows in use stay locked meanwhile.
template <typename Formula>
void EachWindowRow(Run& run, COrbImage& image, COrbImage& source, int plane, int radius, Formula formula) {
  Bounds const& area = run.Area();
  CFilterRows window;
  for (int y = area.top; y < area.bottom; ++y) {
    float* const dst = image.GetImageAdr(area.left, y, plane, kLockRow, nullptr);
    window.Set(&source, radius, 0, y, plane, static_cast<int>(kLockRow));
    formula(WindowRow{window, dst, area.left, area.right, y, plane});
    image.UnlockAll();
    source.UnlockAll();
    run.Tick();
  }
}

}  // namespace orb
