// One order statistic of many values, without sorting them.
//
// A sample of the values gives a bracket that almost surely holds the wanted one. One pass counts what lies below the
// bracket and collects the few values inside it; the wanted rank is then looked up among these. Where the sample
// misled, which takes values arranged against its positions, all values are copied and selected from. Few values are
// selected from at once, floats by their keys (key_rank_kernels.h).
//
// Values that are not numbers rank behind all others.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <type_traits>
#include <vector>

#include <orbimg/core/key_rank_kernels.h>
#include <orbimg/core/rank_kernels.h>

namespace orb {

inline constexpr std::int64_t kRankSample = 65536;        // of many values
inline constexpr std::int64_t kRankSampleShare = 16;      // a sixteenth of fewer,
inline constexpr std::int64_t kLeastRankSample = 256;     // but no less than this;
inline constexpr std::int64_t kLeastSampledRanks = 2048;  // of fewer values than these no sample is taken

// How many values are looked at before, and what follows for the bracket.
struct RankSampling {
  std::int64_t sample;

  static RankSampling Of(std::int64_t count) {
    if (count > 2 * kRankSample) return RankSampling{kRankSample};
    if (count < kLeastSampledRanks) return RankSampling{0};
    return RankSampling{std::max(count / kRankSampleShare, kLeastRankSample)};
  }

  // Half of the bracket in ranks of the sample: four standard deviations of a sample's rank, sqrt(sample) / 2 each.
  std::int64_t Margin() const { return static_cast<std::int64_t>(2.0 * std::sqrt(static_cast<double>(sample))); }
  // A bracket holds two margins of the sample's share of the values on average; its buffer has room for four times
  // that, a sixteenth of many values.
  std::int64_t Room(std::int64_t count) const { return std::min(count, count * 8 * Margin() / sample); }
};

// Positions 0 .. count - 1 of a sample, the same for the same count.
class SamplePositions {
 public:
  explicit SamplePositions(std::int64_t of) : count(of) {}

  std::int64_t Next() {
    state = state * 6364136223846793005u + 1442695040888963407u;
    constexpr double kPerTwoTo32 = 1.0 / 4294967296.0;
    return static_cast<std::int64_t>(static_cast<double>(state >> 32) * kPerTwoTo32 * static_cast<double>(count));
  }

 private:
  std::int64_t count;
  std::uint64_t state = 1;
};

// The value at `rank`, numbers before what is not a number. Reorders `values`.
template <typename T>
T SelectAmong(T* values, std::int64_t count, std::int64_t rank) {
  T* const end = std::partition(values, values + count, [](T v) { return v == v; });
  if (rank >= end - values) return std::numeric_limits<T>::quiet_NaN();
  std::nth_element(values, values + rank, end);
  return values[rank];
}

// The sample's values a margin of ranks below and above the wanted one; infinite where the sample has none there.
template <typename Values, typename T = typename Values::Type>
Bracket<T> FindBracket(Values& values, std::int64_t rank, RankSampling sampling) {
  std::vector<T> sample;
  sample.reserve(static_cast<std::size_t>(sampling.sample));
  SamplePositions positions(values.Count());
  for (std::int64_t i = 0; i < sampling.sample; ++i) {
    T const v = values.At(positions.Next());
    if (v == v) sample.push_back(v);
  }
  double const share = static_cast<double>(rank) / static_cast<double>(values.Count());
  auto const wanted = static_cast<std::int64_t>(share * static_cast<double>(sampling.sample));
  auto const n = static_cast<std::int64_t>(sample.size());
  std::int64_t const margin = sampling.Margin();
  Bracket<T> bracket{-std::numeric_limits<T>::infinity(), std::numeric_limits<T>::infinity()};
  if (wanted >= margin && n > 0) bracket.low = SelectAmong(sample.data(), n, std::min(wanted - margin, n - 1));
  if (wanted + margin < n) bracket.high = SelectAmong(sample.data(), n, wanted + margin);
  return bracket;
}

// Finds the value at index `rank` of all values in ascending order. `Values` has a Type, a Count, Rows and Columns,
// gives the values of a Row, and the one At a position counted along the rows. Every row is to be added once, in any
// order, so that another statistic of it can be taken while it is at hand.
template <typename Values>
class RankSearch {
 public:
  using T = typename Values::Type;

  RankSearch(Values& searched, std::int64_t wantedRank) : values(searched), rank(wantedRank) {
    RankSampling const sampling = RankSampling::Of(values.Count());
    if (sampling.sample == 0) return;
    bracket = FindBracket(values, rank, sampling);
    room = sampling.Room(values.Count()) + values.Columns();
    inside = std::make_unique_for_overwrite<T[]>(static_cast<std::size_t>(room));
  }

  void AddRow(T const* row) {
    if (collected + values.Columns() > room) {
      overflown = true;
    } else {
      collected += SplitRow(row, values.Columns(), bracket, counts, inside.get() + collected);
    }
  }

  T Find() {
    auto const found = FindInBracket();
    return found ? *found : FindInCopy();
  }

 private:
  // Empty where the wanted value lies outside the bracket, or too many lie inside.
  std::optional<T> FindInBracket() {
    if (overflown) return std::nullopt;
    std::int64_t index = rank - counts.below;
    if (index < 0) return std::nullopt;
    if (index < counts.atLow) return bracket.low;
    index -= counts.atLow;
    if (index < collected) return SelectAmong(inside.get(), collected, index);
    // A bracket of one value has had its share already.
    if (bracket.low < bracket.high && index < collected + counts.atHigh) return bracket.high;
    return std::nullopt;
  }

  T FindInCopy() {
    if constexpr (std::is_same_v<T, float>) {
      if (room == 0) return FindAmongKeys();
    }
    auto const copy = std::make_unique_for_overwrite<T[]>(static_cast<std::size_t>(values.Count()));
    T* next = copy.get();
    for (int row = 0; row < values.Rows(); ++row) next = std::copy_n(values.Row(row), values.Columns(), next);
    return SelectAmong(copy.get(), values.Count(), rank);
  }

  // For few enough values that their keys stay close to the processor.
  float FindAmongKeys() {
    auto const keys = std::make_unique_for_overwrite<std::int32_t[]>(static_cast<std::size_t>(values.Count()));
    KeyRange range;
    std::int32_t* next = keys.get();
    for (int row = 0; row < values.Rows(); ++row, next += values.Columns()) {
      KeysOfRow(values.Row(row), values.Columns(), next, range);
    }
    std::int32_t const key = KeyAtRank(keys.get(), next - keys.get(), rank, range);
    return key == kHighestKey ? std::numeric_limits<float>::quiet_NaN() : SampleOf(key);
  }

  Values& values;
  std::int64_t rank;
  Bracket<T> bracket{};
  BracketCounts counts;
  std::int64_t room = 0;  // none: too few values for a sample
  std::unique_ptr<T[]> inside;
  std::int64_t collected = 0;
  bool overflown = false;
};

}  // namespace orb
