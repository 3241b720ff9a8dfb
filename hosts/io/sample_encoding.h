// From float samples to the numbers a file stores, with an account of what these cannot hold.
#pragma once

#include <cstdint>
#include <string>

#include <hosts/io/sample_type.h>

namespace orb::host {

// Counts of samples that a file holds otherwise than they were.
struct SampleLosses {
  std::int64_t below = 0;     // the least number of the type, instead
  std::int64_t above = 0;     // the greatest number of the type, instead
  std::int64_t noNumber = 0;  // 0 instead
  std::int64_t rounded = 0;   // to the nearest whole number, halves to the even one

  SampleLosses& operator+=(SampleLosses const& other);
  bool operator==(SampleLosses const&) const = default;
  // "3 samples below 0 became 0, 12 were rounded"; empty where nothing was lost.
  std::string Text(SampleType type) const;
};

// What is stored for a sample v: (v - black) / range * top, in double and in this order; v itself by default.
struct SampleMapping {
  double black = 0.0;
  double range = 1.0;
  double top = 1.0;

  bool operator==(SampleMapping const&) const = default;
};

// Writes `count` numbers, each `stride` numbers behind the last, in the byte order of this machine. A float is rounded
// once from the double of the mapping; without a mapping it keeps its bits. kInt64 and kDouble are not written.
SampleLosses EncodeSamples(float const* samples, std::int64_t count, SampleMapping const& mapping, SampleType type,
                           void* stored, std::int64_t stride);

}  // namespace orb::host
