#include <orbimg/display/byte_row_kernels.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

// Columns whose bytes wait as whole numbers: narrowing from double to byte in one loop would hold the vectors to the
// smallest lanes' pace.
constexpr std::ptrdiff_t kBatch = 128;

// Samples are asked for this far ahead. They leave the row at its end, for the next row; a prefetch never faults.
constexpr std::uintptr_t kBytesAhead = 4096;
constexpr std::uintptr_t kCacheLine = 64;

inline void PrefetchAhead(float const* src) {
  std::uintptr_t const ahead = reinterpret_cast<std::uintptr_t>(src) + kBytesAhead;
  for (std::uintptr_t i = 0; i < kBatch * sizeof(float); i += kCacheLine) {
    __builtin_prefetch(reinterpret_cast<void const*>(ahead + i));
  }
}

// As ToByte, by multiplication; not-a-number is 0.
inline int MultipliedByte(float raw, double min, double scale) {
  double const v = (raw - min) * scale;
  double const notBelow = v > 0.0 ? v : 0.0;
  return static_cast<int>(notBelow < 255.0 ? notBelow : 255.0);
}

ORB_ROW_KERNEL void MultiplyRow(float const* src, unsigned char* dst, std::ptrdiff_t count, double min, double scale) {
  alignas(64) int bytes[kBatch];
  for (std::ptrdiff_t begin = 0; begin < count; begin += kBatch) {
    std::ptrdiff_t const columns = std::min(kBatch, count - begin);
    PrefetchAhead(src + begin);
    for (std::ptrdiff_t x = 0; x < columns; ++x) bytes[x] = MultipliedByte(src[begin + x], min, scale);
    for (std::ptrdiff_t x = 0; x < columns; ++x) dst[begin + x] = static_cast<unsigned char>(bytes[x]);
  }
}

ORB_ROW_KERNEL void DivideRow(float const* src, unsigned char* dst, std::ptrdiff_t count, ByteLevel level) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) dst[x] = level.ToByte(src[x]);
}

// Place of a float among all floats in rising order, 0.0 and -0.0 at 0; and the float of a place, infinities at the
// ends.
std::int64_t PlaceOf(float value) {
  std::int32_t const bits = std::bit_cast<std::int32_t>(value);
  return bits >= 0 ? bits : -static_cast<std::int64_t>(bits & 0x7fffffff);
}

constexpr std::int64_t kPlaceOfInfinity = 0x7f800000;

float FloatAt(std::int64_t place) {
  float const size = std::bit_cast<float>(static_cast<std::int32_t>(place < 0 ? -place : place));
  return place < 0 ? -size : size;
}

// Place of the smallest float whose byte is at least k. The search widens from a guess that is nearly always within two
// places.
std::int64_t FindStep(ByteLevel const& level, int k) {
  auto const reaches = [&](std::int64_t place) { return level.ToByte(FloatAt(place)) >= k; };
  std::int64_t high = std::clamp(PlaceOf(static_cast<float>(level.min + level.range * (k / 255.0))), -kPlaceOfInfinity,
                                 kPlaceOfInfinity);
  std::int64_t low = high;
  for (std::int64_t width = 1; !reaches(high); width *= 2) high = std::min(high + width, kPlaceOfInfinity);
  for (std::int64_t width = 1; reaches(low); width *= 2) low = std::max(low - width, -kPlaceOfInfinity);
  while (high - low > 1) {
    std::int64_t const middle = low + (high - low) / 2;
    (reaches(middle) ? high : low) = middle;
  }
  return high;
}

// Levels for which both forms rise with the sample, and for which minus infinity is black and infinity white.
bool AreOrdinary(ByteLevel const& level) {
  return std::isfinite(level.min) && std::isfinite(level.max) && level.min < level.max &&
         level.range == level.max - level.min && std::isnormal(255.0 / level.range);
}

bool IsSameAsDividing(ByteLevel const& level, double scale) {
  for (int k = 1; k <= 255; ++k) {
    std::int64_t const step = FindStep(level, k);
    if (MultipliedByte(FloatAt(step), level.min, scale) < k) return false;
    if (MultipliedByte(FloatAt(step - 1), level.min, scale) >= k) return false;
  }
  return true;
}

}  // namespace

ByteRule::ByteRule(ByteLevel const& levelOfPlane) : level(levelOfPlane) {
  if (!AreOrdinary(level)) return;
  // Where the exact value is a whole number the quotient reaches it in spite of its roundings. Two units in the last
  // place make the product reach it too, and the next smaller float is as a rule too far below to be lifted over it.
  // Around a step at 0.0 floats are closer than that, and the plain product may be the right one.
  constexpr double kLift = 1.0 + 2.0 * std::numeric_limits<double>::epsilon();
  for (double const candidate : {255.0 / level.range * kLift, 255.0 / level.range}) {
    if (!IsSameAsDividing(level, candidate)) continue;
    scale = candidate;
    return;
  }
}

void ByteRule::ConvertRow(float const* src, unsigned char* dst, std::ptrdiff_t count) const {
  if (scale != 0.0) {
    MultiplyRow(src, dst, count, level.min, scale);
  } else {
    DivideRow(src, dst, count, level);
  }
}

ORB_ROW_KERNEL void InterleaveRow(unsigned char const* __restrict red, unsigned char const* __restrict green,
                                  unsigned char const* __restrict blue, unsigned char* __restrict pixels,
                                  std::ptrdiff_t count) {
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    pixels[3 * x] = blue[x];
    pixels[3 * x + 1] = green[x];
    pixels[3 * x + 2] = red[x];
  }
}

ORB_ROW_KERNEL void ColorCellRow(unsigned char const* __restrict red, unsigned char const* __restrict green,
                                 unsigned char const* __restrict blue, std::uint16_t* __restrict cells,
                                 std::ptrdiff_t count) {
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    int const cell = (red[x] >> 3) << 10 | (green[x] >> 3) << 5 | blue[x] >> 3;
    cells[x] = static_cast<std::uint16_t>(cell);
  }
}

}  // namespace orb
