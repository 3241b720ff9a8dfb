// The 256 colours of an 8-bit view of a colour image, and each pixel's index among them.
//
// Colours are counted in 32768 cells of five bits a channel; from then on a cell stands for its centre. 240 palette
// slots are shared out over eight lightness bands, light to dark, by the root of a band's pixels and a fixed
// preference; each band takes its most frequent cells. The last 16 slots take, one after the other, the cell farthest
// from all colours so far, however rare it is. Every other cell goes to the nearest of the 256. There is no dithering,
// and two pixels of one cell always get the same index. Distance is the sum of the squares of the differences in red,
// green and blue.
//
// Intended: the bytes of all three planes are formed with the levels of plane 0.
//
// Scratch memory: 32768 counters and what is derived from them, about 1 MB at most, whatever the size of the image.
#pragma once

#include <cstddef>

#include <orbimg/core/orb_image.h>
#include <platform/bitmap_info.h>

namespace orb {

// `image` has three planes unless it has no pixel. Writes the indices of image row 0 into the last of the `rows`, which
// are `stride` bytes apart, and 256 palette entries. Lack of memory is std::bad_alloc.
void QuantizeColors(COrbImage const& image, unsigned char* rows, std::size_t stride, RGBQUAD* palette);

}  // namespace orb
