// From the numbers a file stores to float samples.
#pragma once

#include <cstdint>
#include <optional>

namespace orb::host {

// How stored numbers turn into samples: stored * scale + zero, in double, rounded once to float. For 64-bit integers
// the arithmetic has 64 bits of mantissa, so that they too are rounded only once. A stored integer equal to `blank` has
// no value.
struct Scaling {
  double scale = 1.0;
  double zero = 0.0;
  std::optional<std::int64_t> blank;

  bool IsIdentity() const { return scale == 1.0 && zero == 0.0; }
};

// `bitpix` is FITS's code of the stored type: 8 unsigned, 16, 32, 64 signed integers, -32, -64 floats, in the byte
// order of this machine. Returns how many of the samples are not finite.
std::int64_t ConvertSamples(int bitpix, void const* stored, std::int64_t count, Scaling const& scaling, float* samples);

}  // namespace orb::host
