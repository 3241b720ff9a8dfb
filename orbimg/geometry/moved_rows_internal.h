// The walk of operators that move samples: every row of every plane of the image as it is now.
#pragma once

#include <orbimg/core/operator_run.h>

namespace orb {

// Calls move(row, y, plane) for the address of each row, and ticks after each.
template <typename Move>
void EachMovedRow(COrbImage& image, Run& run, Move move) {
  for (int p = 0; p < image.GetPlanes(); ++p) {
    for (int y = 0; y < image.GetHeight(); ++y) {
      move(image.GetImageAdr(0, y, p, 0, nullptr), y, p);
      run.Tick();
    }
  }
}

// The same with each row locked while it is written: for moves that call back into a store.
template <typename Move>
void EachLockedRow(COrbImage& image, Run& run, Move move) {
  for (int p = 0; p < image.GetPlanes(); ++p) {
    for (int y = 0; y < image.GetHeight(); ++y) {
      {
        LockedRow const row(image, 0, y, p, false);
        move(row.Address(), y, p);
      }
      run.Tick();
    }
  }
}

}  // namespace orb
