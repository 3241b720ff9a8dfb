#include <algorithm>
#include <array>
#include <cstddef>

#include <orbimg/tone/color_ramp_internal.h>

namespace {

template <std::size_t colours>
using Entries = std::array<std::array<float, colours + 1>, orb::kRampChannels>;

// Inverse of the spacing, digit for digit.
constexpr double kScaleOfFive = 0.01568627450980392;
constexpr double kScaleOfSeven = 0.023529411764705882;

constexpr Entries<5> kSpectrum = {{{0, 0, 0, 255, 255}, {0, 255, 255, 255, 0}, {255, 255, 0, 0, 0}}};
constexpr Entries<7> kFullSpectrum = {{
    {0, 0, 0, 0, 255, 255, 255},
    {0, 0, 255, 255, 255, 0, 255},
    {0, 255, 255, 0, 0, 0, 255},
}};
constexpr Entries<5> kBlues = {{{0, 0, 0, 128, 255}, {0, 0, 0, 128, 255}, {0, 128, 255, 255, 255}}};

// Tables of 256 colours through nine given ones, the last at 255, the others every 32.
constexpr std::size_t kTableSize = 256;
constexpr int kKnotSpacing = 32;
constexpr std::size_t kKnots = 9;
using Knots = std::array<int, kKnots>;
using Table = Entries<kTableSize>;

constexpr int PlaceOfKnot(std::size_t k) { return std::min(static_cast<int>(k) * kKnotSpacing, 255); }

constexpr double SlopeAfter(Knots const& knots, std::size_t k) {
  return static_cast<double>(knots[k + 1] - knots[k]) / (PlaceOfKnot(k + 1) - PlaceOfKnot(k));
}

// Slope of the curve at a knot: the harmonic mean of the slopes of both sides, 0 where one of them is flat. The cubic
// through knots with such slopes rises wherever the knots do (Fritsch and Carlson, 1980).
constexpr double SlopeAt(Knots const& knots, std::size_t k) {
  if (k == 0) return SlopeAfter(knots, 0);
  if (k == kKnots - 1) return SlopeAfter(knots, k - 1);
  double const before = SlopeAfter(knots, k - 1);
  double const after = SlopeAfter(knots, k);
  return before * after > 0.0 ? 2.0 * before * after / (before + after) : 0.0;
}

// Hermite's cubic between two knots, at whole places, rounded to a byte.
constexpr float ByteAt(Knots const& knots, int place) {
  std::size_t const k = std::min(static_cast<std::size_t>(place / kKnotSpacing), kKnots - 2);
  double const width = PlaceOfKnot(k + 1) - PlaceOfKnot(k);
  double const t = (place - PlaceOfKnot(k)) / width;
  double const rise = t * t * (3.0 - 2.0 * t);
  double const v = knots[k] * (1.0 - rise) + knots[k + 1] * rise +
                   width * t * (1.0 - t) * ((1.0 - t) * SlopeAt(knots, k) - t * SlopeAt(knots, k + 1));
  return static_cast<float>(std::clamp(static_cast<int>(v + 0.5), 0, 255));
}

constexpr Table MakeTable(std::array<Knots, orb::kRampChannels> const& knots) {
  Table table{};
  for (std::size_t p = 0; p < table.size(); ++p) {
    for (std::size_t i = 0; i < kTableSize; ++i) table[p][i] = ByteAt(knots[p], static_cast<int>(i));
  }
  return table;
}

constexpr Table kCold = MakeTable({{{0, 0, 0, 0, 21, 74, 140, 201, 246},
                                    {0, 23, 59, 100, 143, 182, 213, 236, 252},
                                    {0, 33, 78, 124, 168, 199, 224, 241, 252}}});
constexpr Table kWarm = MakeTable({{{0, 44, 104, 163, 202, 225, 239, 248, 253},
                                    {0, 0, 1, 13, 46, 103, 162, 215, 249},
                                    {0, 0, 0, 0, 23, 76, 143, 205, 248}}});

constexpr Table MakeFire() {
  Table table{};
  for (std::size_t p = 0; p < table.size(); ++p) {
    for (int i = 0; i < static_cast<int>(kTableSize); ++i) {
      table[p][static_cast<std::size_t>(i)] =
          static_cast<float>(std::clamp(3 * (i - 85 * static_cast<int>(p)), 0, 255));
    }
  }
  return table;
}

constexpr Table kFire = MakeFire();

template <std::size_t entries>
orb::ColorRamp RampOver(double scale, double spacing, double factor,
                        std::array<std::array<float, entries>, orb::kRampChannels> const& channels) {
  return {scale, spacing, factor, {channels[0].data(), channels[1].data(), channels[2].data()}};
}

}  // namespace

orb::ColorRamp orb::RampOf(int palette) {
  switch (palette) {
    case 0:
      return RampOver(kScaleOfFive, 63.75, kScaleOfFive, kSpectrum);
    case 1:
      // Intended: 1/64 and not 1/42.5, so that the colour jumps at each stop.
      return RampOver(kScaleOfSeven, 42.5, 0.015625, kFullSpectrum);
    case 2:
      return RampOver(kScaleOfFive, 63.75, kScaleOfFive, kBlues);
    case 3:
      return RampOver(1.0, 1.0, 1.0, kCold);
    case 4:
      return RampOver(1.0, 1.0, 1.0, kWarm);
    case 5:
      return RampOver(1.0, 1.0, 1.0, kFire);
    default:
      return {1.0, 1.0, 1.0, {nullptr, nullptr, nullptr}};
  }
}
