// From the numbers a file stores to float samples.
#pragma once

#include <cstdint>
#include <optional>

#include <hosts/io/sample_type.h>

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

// What the samples of a call are like.
struct Converted {
  std::int64_t nonFinite = 0;
  // Finite numbers that a float does not hold, which are rounded. Counted for integers of 32 and 64 bits and for
  // doubles, where the scale is 1 or -1: any other scale rounds nearly all.
  std::int64_t inexact = 0;

  Converted& operator+=(Converted const& other) {
    nonFinite += other.nonFinite;
    inexact += other.inexact;
    return *this;
  }
};

// `stored` holds `count` numbers, each `stride` numbers behind the last, in the byte order of this machine.
Converted ConvertSamples(SampleType type, void const* stored, std::int64_t count, std::int64_t stride,
                         Scaling const& scaling, float* samples);

}  // namespace orb::host
