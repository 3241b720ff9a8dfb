// Order statistics under a disk, by sorting.
#pragma once

#include <vector>

#include <orbimg/orbimg.h>

namespace orb::test::reference {

// Ascending, -0.0 before 0.0, not-a-number at the ends by its sign.
void SortSamples(std::vector<float>& samples);

// The cells of a square of half size `radius` with dx^2 + dy^2 <= range^2.
bool IsUnderDisk(int dx, int dy, double range);
int CountUnderDisk(int radius, double range);

// The samples under the disk around (x, y), ascending. Rows mirror: -1 reads row 1, and the row below the last reads
// the last; rows still outside are clamped, as columns are.
std::vector<float> SamplesUnderDisk(COrbImage& image, int x, int y, int plane, int radius, double range);

// Of the cells inside the image, those below row y count as 0.0; the value in the middle, and 0.0 without cells.
float MedianUnderUpperHalf(COrbImage& image, int x, int y, int plane, int radius, double range);

}  // namespace orb::test::reference
