#include <hosts/io/sample_conversion.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace orb::host {

namespace {

// The type in which a stored number is scaled: one that holds it exactly.
template <typename Stored>
using Scaled = std::conditional_t<std::is_same_v<Stored, std::int64_t>, long double, double>;

template <typename Stored>
constexpr bool kIsWide = sizeof(Stored) == 8 || (sizeof(Stored) == 4 && std::is_integral_v<Stored>);

template <typename Stored>
void ScaleRow(Stored const* stored, std::int64_t count, std::int64_t stride, Scaling const& scaling, float* samples) {
  Scaled<Stored> const scale = scaling.scale;
  Scaled<Stored> const zero = scaling.zero;
  if (stride == 1) {  // a loop of its own, which the compiler can vectorise
    for (std::int64_t i = 0; i < count; ++i) {
      samples[i] = static_cast<float>(static_cast<Scaled<Stored>>(stored[i]) * scale + zero);
    }
    return;
  }
  for (std::int64_t i = 0; i < count; ++i) {
    samples[i] = static_cast<float>(static_cast<Scaled<Stored>>(stored[i * stride]) * scale + zero);
  }
}

template <typename Stored>
std::int64_t CountInexact(Stored const* stored, std::int64_t count, std::int64_t stride, Scaling const& scaling,
                          float const* samples) {
  Scaled<Stored> const scale = scaling.scale;
  Scaled<Stored> const zero = scaling.zero;
  std::int64_t found = 0;
  for (std::int64_t i = 0; i < count; ++i) {
    Scaled<Stored> const value = static_cast<Scaled<Stored>>(stored[i * stride]) * scale + zero;
    found += std::isfinite(samples[i]) && static_cast<Scaled<Stored>>(samples[i]) != value ? 1 : 0;
  }
  return found;
}

template <typename Stored>
void BlankRow(Stored const* stored, std::int64_t count, std::int64_t stride, std::int64_t blank, float* samples) {
  for (std::int64_t i = 0; i < count; ++i) {
    if (static_cast<std::int64_t>(stored[i * stride]) == blank) samples[i] = std::numeric_limits<float>::quiet_NaN();
  }
}

template <typename Stored>
std::int64_t Convert(void const* storedBytes, std::int64_t count, std::int64_t stride, Scaling const& scaling,
                     float* samples) {
  auto const* stored = static_cast<Stored const*>(storedBytes);
  ScaleRow(stored, count, stride, scaling, samples);
  if constexpr (std::is_integral_v<Stored>) {
    if (scaling.blank) BlankRow(stored, count, stride, *scaling.blank, samples);
  }
  if constexpr (kIsWide<Stored>) {
    if (std::abs(scaling.scale) == 1.0) return CountInexact(stored, count, stride, scaling, samples);
  }
  return 0;
}

// Floats as they are keep their bits, those of signalling not-a-numbers too.
std::int64_t ConvertFloats(void const* stored, std::int64_t count, std::int64_t stride, Scaling const& scaling,
                           float* samples) {
  if (!scaling.IsIdentity()) return Convert<float>(stored, count, stride, scaling, samples);
  if (stride == 1) {
    std::memcpy(samples, stored, static_cast<std::size_t>(count) * sizeof(float));
    return 0;
  }
  auto const* bits = static_cast<std::uint32_t const*>(stored);
  for (std::int64_t i = 0; i < count; ++i) std::memcpy(samples + i, bits + i * stride, sizeof(float));
  return 0;
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

Converted ConvertSamples(SampleType type, void const* stored, std::int64_t count, std::int64_t stride,
                         Scaling const& scaling, float* samples) {
  auto const convert = [&] {
    switch (type) {
      case SampleType::kUint8:
        return &Convert<std::uint8_t>;
      case SampleType::kInt8:
        return &Convert<std::int8_t>;
      case SampleType::kUint16:
        return &Convert<std::uint16_t>;
      case SampleType::kInt16:
        return &Convert<std::int16_t>;
      case SampleType::kUint32:
        return &Convert<std::uint32_t>;
      case SampleType::kInt32:
        return &Convert<std::int32_t>;
      case SampleType::kInt64:
        return &Convert<std::int64_t>;
      case SampleType::kDouble:
        return &Convert<double>;
      default:
        return &ConvertFloats;
    }
  }();
  Converted result;
  result.inexact = convert(stored, count, stride, scaling, samples);
  result.nonFinite = CountNonFinite(samples, count);
  return result;
}

}  // namespace orb::host
