#include <hosts/io/sample_encoding.h>

#include <cmath>
#include <cstring>

namespace orb::host {

namespace {

double Map(float sample, SampleMapping const& mapping) {
  return (sample - mapping.black) / mapping.range * mapping.top;
}

// To the nearest whole number, halves to the even one: above 2^52 a double has no digits behind the point. Vectorises,
// unlike the library's function, and equals it for what fits into 32 bits.
double RoundToEven(double value) {
  constexpr double kShift = 0x1.8p52;
  return (value + kShift) - kShift;
}

template <typename Stored>
SampleLosses Encode(float const* samples, std::int64_t count, SampleMapping const& mapping, SampleType type,
                    void* storedBytes, std::int64_t stride) {
  auto* const stored = static_cast<Stored*>(storedBytes);
  double const lowest = LowestOf(type);
  double const highest = HighestOf(type);
  bool const isMapped = !(mapping == SampleMapping());
  SampleLosses losses;
  for (std::int64_t i = 0; i < count; ++i) {
    double const value = isMapped ? Map(samples[i], mapping) : static_cast<double>(samples[i]);
    if (std::isnan(value)) {
      stored[i * stride] = 0;
      ++losses.noNumber;
      continue;
    }
    // One beyond both ends, so that the rounding stays within its range.
    double const near = value < lowest - 1.0 ? lowest - 1.0 : value > highest + 1.0 ? highest + 1.0 : value;
    double const whole = RoundToEven(near);
    double const kept = whole < lowest ? lowest : whole > highest ? highest : whole;
    losses.below += whole < lowest ? 1 : 0;
    losses.above += whole > highest ? 1 : 0;
    losses.rounded += kept == whole && whole != value ? 1 : 0;
    stored[i * stride] = static_cast<Stored>(kept);
  }
  return losses;
}

SampleLosses EncodeFloats(float const* samples, std::int64_t count, SampleMapping const& mapping, SampleType,
                          void* storedBytes, std::int64_t stride) {
  auto* const stored = static_cast<unsigned char*>(storedBytes);
  bool const isMapped = !(mapping == SampleMapping());
  for (std::int64_t i = 0; i < count; ++i) {
    float const value = isMapped ? static_cast<float>(Map(samples[i], mapping)) : samples[i];
    std::memcpy(stored + i * stride * static_cast<std::int64_t>(sizeof(float)), &value, sizeof(float));
  }
  return {};
}

std::string Count(std::int64_t count) { return std::to_string(count) + (count == 1 ? " sample" : " samples"); }

std::string Whole(double number) { return std::to_string(static_cast<std::int64_t>(number)); }

}  // namespace

SampleLosses& SampleLosses::operator+=(SampleLosses const& other) {
  below += other.below;
  above += other.above;
  noNumber += other.noNumber;
  rounded += other.rounded;
  return *this;
}

std::string SampleLosses::Text(SampleType type) const {
  std::string text;
  auto const add = [&text](std::string const& part) { text += (text.empty() ? "" : ", ") + part; };
  std::string const low = Whole(LowestOf(type));
  std::string const high = Whole(HighestOf(type));
  if (below != 0) add(Count(below) + " below " + low + " became " + low);
  if (above != 0) add(Count(above) + " above " + high + " became " + high);
  if (noNumber != 0) add(Count(noNumber) + " without a value became 0");
  if (rounded != 0) add(Count(rounded) + " rounded to whole numbers");
  return text;
}

SampleLosses EncodeSamples(float const* samples, std::int64_t count, SampleMapping const& mapping, SampleType type,
                           void* stored, std::int64_t stride) {
  auto const encode = [&] {
    switch (type) {
      case SampleType::kUint8:
        return &Encode<std::uint8_t>;
      case SampleType::kInt8:
        return &Encode<std::int8_t>;
      case SampleType::kUint16:
        return &Encode<std::uint16_t>;
      case SampleType::kInt16:
        return &Encode<std::int16_t>;
      case SampleType::kUint32:
        return &Encode<std::uint32_t>;
      case SampleType::kInt32:
        return &Encode<std::int32_t>;
      default:
        return &EncodeFloats;
    }
  }();
  return encode(samples, count, mapping, type, stored, stride);
}

}  // namespace orb::host
