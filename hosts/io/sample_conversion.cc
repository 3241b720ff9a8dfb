#include <hosts/io/sample_conversion.h>

#include <bit>
#include <cstring>
#include <limits>
#include <type_traits>

namespace orb::host {

namespace {

// The type in which a stored number is scaled: one that holds it exactly.
template <typename Stored>
using Scaled = std::conditional_t<std::is_same_v<Stored, std::int64_t>, long double, double>;

template <typename Stored>
void ScaleRow(Stored const* stored, std::int64_t count, Scaling const& scaling, float* samples) {
  Scaled<Stored> const scale = scaling.scale;
  Scaled<Stored> const zero = scaling.zero;
  for (std::int64_t i = 0; i < count; ++i) {
    samples[i] = static_cast<float>(static_cast<Scaled<Stored>>(stored[i]) * scale + zero);
  }
}

template <typename Stored>
void BlankRow(Stored const* stored, std::int64_t count, std::int64_t blank, float* samples) {
  for (std::int64_t i = 0; i < count; ++i) {
    if (stored[i] == blank) samples[i] = std::numeric_limits<float>::quiet_NaN();
  }
}

template <typename Stored>
void Convert(void const* storedBytes, std::int64_t count, Scaling const& scaling, float* samples) {
  auto const* stored = static_cast<Stored const*>(storedBytes);
  ScaleRow(stored, count, scaling, samples);
  if constexpr (std::is_integral_v<Stored>) {
    if (scaling.blank) BlankRow(stored, count, *scaling.blank, samples);
  }
}

std::int64_t CountNonFinite(float const* samples, std::int64_t count) {
  constexpr std::uint32_t kExponent = 0x7f800000u;
  std::int64_t found = 0;
  for (std::int64_t i = 0; i < count; ++i) {
    found += (std::bit_cast<std::uint32_t>(samples[i]) & kExponent) == kExponent ? 1 : 0;
  }
  return found;
}

}  // namespace

std::int64_t ConvertSamples(int bitpix, void const* stored, std::int64_t count, Scaling const& scaling,
                            float* samples) {
  switch (bitpix) {
    case 8:
      Convert<std::uint8_t>(stored, count, scaling, samples);
      break;
    case 16:
      Convert<std::int16_t>(stored, count, scaling, samples);
      break;
    case 32:
      Convert<std::int32_t>(stored, count, scaling, samples);
      break;
    case 64:
      Convert<std::int64_t>(stored, count, scaling, samples);
      break;
    case -64:
      Convert<double>(stored, count, scaling, samples);
      break;
    default:
      if (scaling.IsIdentity()) {
        std::memcpy(samples, stored, static_cast<std::size_t>(count) * sizeof(float));
      } else {
        Convert<float>(stored, count, scaling, samples);
      }
  }
  return CountNonFinite(samples, count);
}

}  // namespace orb::host
