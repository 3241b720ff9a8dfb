// Rows of samples to displayed bytes, and bytes to pixels.
//
// ByteLevel::ToByte costs a division a sample. ByteRule multiplies instead, but only where that is proven to give the
// same byte for every float there is. Both forms rise with the sample from 0 to 255 and never fall, so they are the
// same function if each of the 255 steps lies at the same float; the constructor compares them on both sides of every
// step.
#pragma once

#include <cstddef>
#include <cstdint>

#include <orbimg/core/level.h>

namespace orb {

class ByteRule {
 public:
  explicit ByteRule(ByteLevel const& level);

  // Bytes of `count` samples, each as ByteLevel::ToByte gives it.
  void ConvertRow(float const* src, unsigned char* dst, std::ptrdiff_t count) const;

 private:
  ByteLevel level;
  double scale = 0.0;  // 0 where multiplying is not proven: rows are divided
};

// Blue, green, red of each pixel, one after the other. Sources may be the same row.
void InterleaveRow(unsigned char const* red, unsigned char const* green, unsigned char const* blue,
                   unsigned char* pixels, std::ptrdiff_t count);

// The upper five bits of each byte as one number: red * 1024 + green * 32 + blue.
void ColorCellRow(unsigned char const* red, unsigned char const* green, unsigned char const* blue, std::uint16_t* cells,
                  std::ptrdiff_t count);

}  // namespace orb
