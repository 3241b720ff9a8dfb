// Plain transcription of the choice of 256 colours for a colour image, every search over the whole table.
#pragma once

#include <cstddef>

#include <orbimg/orbimg.h>

namespace orb::test::reference {

// 0 where min >= v, otherwise 255 where max <= v, otherwise truncated; 0 for what no byte can hold.
unsigned char ByteOf(float v, double min, double max, double range);

// Writes the pixel bytes (bottom row first, `stride` bytes a row) and blue, green, red of 256 palette entries of 4
// bytes.
void QuantizeColors(COrbImage& image, unsigned char* rows, std::size_t stride, unsigned char* palette);

}  // namespace orb::test::reference
