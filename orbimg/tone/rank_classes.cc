#include <algorithm>

#include <orbimg/core/constants.h>
#include <orbimg/core/row_kernel.h>
#include <orbimg/core/truncate.h>
#include <orbimg/tone/histogram_equalization_kernels.h>
#include <orbimg/tone/rank_classes_internal.h>

namespace orb {

namespace {

constexpr int kLastClass = kRankClasses - 1;
constexpr std::size_t kMargin = 100;  // samples that a class takes beyond its count

// A bucket should fit the nearest cache, and all buckets together the numbers of a place.
constexpr std::size_t kSamplesPerBucket = 2048;
constexpr std::size_t kMostBuckets = 32768;

}  // namespace

RankClasses::RankClasses(double min, double max) : range(max - min) {
  for (int i = 0; i < kRankClasses; ++i) edges[static_cast<std::size_t>(i)] = i * range * kInverse256 + min;
  edges[kRankClasses] = max + 1.0;
}

void RankClasses::AddRow(float const* src, int count, RankPlace* places) {
  int bins[kBlockColumns];
  for (int begin = 0; begin < count; begin += kBlockColumns) {
    int const columns = std::min(count - begin, static_cast<int>(kBlockColumns));
    RankBinRow(src + begin, columns, Min(), range, bins);
    for (int x = 0; x < columns; ++x) {
      if (bins[x] == kNoBin) {
        places[begin + x] = kUnranked;
        continue;
      }
      // No sample counts beyond the last class: s - min never exceeds the range.
      int const bin = std::min(bins[x], kLastClass);
      RankPlace const place = ClassOf(src[begin + x], bin);
      ++counted[static_cast<std::size_t>(bin)];
      if (place != kUnranked) ++sizes[place];
      places[begin + x] = place;
    }
  }
}

// The edges rise but for the last one, which counts for the last class alone.
RankPlace RankClasses::ClassOf(double v, int bin) const {
  auto c = static_cast<std::size_t>(bin);
  while (c > 0 && v < edges[c]) --c;
  while (c < kRankClasses && v >= edges[c + 1]) ++c;
  return c < kRankClasses ? static_cast<RankPlace>(c) : kUnranked;
}

// Intended: what passes a class's count by more than the margin is dropped, and so is a class without a count.
std::size_t RankClasses::KeptOf(int c) const {
  return IsCounted(c) ? std::min(SizeOf(c), counted[static_cast<std::size_t>(c)] + kMargin) : 0;
}

RankBuckets::RankBuckets(RankClasses const& classes) {
  std::size_t total = 0;
  for (int c = 0; c < kRankClasses; ++c) total += classes.KeptOf(c);
  std::size_t const samples = std::max(kSamplesPerBucket, total / kMostBuckets);
  for (int c = 0; c < kRankClasses; ++c) {
    std::size_t const room = classes.KeptOf(c);
    std::size_t const parts = room / samples + 1;
    double const width = classes.EdgeOf(c + 1) - classes.EdgeOf(c);
    double const scale = width > 0.0 ? static_cast<double>(parts) / width : 0.0;
    divisions.push_back({classes.EdgeOf(c), scale, parts - 1, buckets.size(), room});
    buckets.insert(buckets.end(), parts, RankBucket{c});
  }
  sizes.resize(buckets.size());
}

// Rises with v: so buckets are in the order of their values.
RankPlace RankBuckets::BucketOf(double v, Division& division) {
  if (division.room == 0) return kUnranked;
  --division.room;
  int const part = TruncateToInt((v - division.min) * division.scale);
  std::size_t const bucket = division.first + std::min(static_cast<std::size_t>(std::max(part, 0)), division.last);
  ++sizes[bucket];
  return static_cast<RankPlace>(bucket);
}

void RankBuckets::AddRow(float const* src, int count, RankPlace* places) {
  for (int x = 0; x < count; ++x) {
    if (places[x] != kUnranked) places[x] = BucketOf(src[x], divisions[places[x]]);
  }
}

void RankBuckets::Start() {
  std::size_t next = 0;
  for (std::size_t i = 0; i < buckets.size(); ++i) {
    buckets[i].next = next;
    next += sizes[i];
  }
}

}  // namespace orb
