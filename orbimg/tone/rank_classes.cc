#include <algorithm>
#include <cmath>

#include <orbimg/core/constants.h>
#include <orbimg/core/row_kernel.h>
#include <orbimg/tone/histogram_equalization_kernels.h>
#include <orbimg/tone/rank_classes_internal.h>

namespace orb {

namespace {

constexpr std::size_t kLastClass = kRankClasses - 1;
constexpr std::size_t kMargin = 100;  // samples that a class takes beyond its count

// A bucket should be sorted within the nearer caches, and there should not be more of them than can be filled side by
// side, and never more than a place can name.
constexpr double kSamplesPerBucket = 8192.0;
constexpr double kMostBuckets = 16384.0;

// Calls each(x, bin) for the samples of a row that are numbers, and other(x) for the others.
template <typename Each, typename Other>
void EachBin(float const* src, int count, double min, double range, Each each, Other other) {
  int bins[kBlockColumns];
  for (int begin = 0; begin < count; begin += kBlockColumns) {
    int const columns = std::min(count - begin, static_cast<int>(kBlockColumns));
    RankBinRow(src + begin, columns, min, range, bins);
    for (int x = 0; x < columns; ++x) {
      // No sample counts beyond the last class: s - min never exceeds the range.
      bins[x] != kNoBin ? each(begin + x, std::min(static_cast<std::size_t>(bins[x]), kLastClass)) : other(begin + x);
    }
  }
}

}  // namespace

RankClasses::RankClasses(double min, double max) : range(max - min) {
  for (int i = 0; i < kRankClasses; ++i) edges[static_cast<std::size_t>(i)] = i * range * kInverse256 + min;
  edges[kRankClasses] = max + 1.0;
}

void RankClasses::LookAt(float const* src, int count) {
  EachBin(
      src, count, Min(), range, [&](int, std::size_t bin) { ++sizes[bin]; }, [](int) {});
}

void RankClasses::Divide(double share) {
  double total = 0.0;
  for (std::size_t const size : sizes) total += static_cast<double>(size) / share;
  double const perBucket = std::max(kSamplesPerBucket, total / kMostBuckets);
  for (std::size_t c = 0; c < kRankClasses; ++c) {
    double const width = edges[c + 1] - edges[c];
    int const parts = static_cast<int>(static_cast<double>(sizes[c]) / share / perBucket) + 1;
    // A class may be so narrow that there is no such number; then it stays whole.
    bool const isWhole = !(width > 0.0) || !std::isfinite(parts / width);
    int const last = isWhole ? 0 : parts - 1;
    divisions[c] = {edges[c], isWhole ? 0.0 : parts / width, last, static_cast<int>(buckets.size())};
    buckets.insert(buckets.end(), static_cast<std::size_t>(last) + 1, RankBucket{c});
  }
}

void RankClasses::AddRow(float const* src, int count, RankPlace* places) {
  auto const add = [&](int x, std::size_t bin) {
    double const v = src[x];
    std::size_t const c = ClassOf(v, bin);
    // Most are counted with their buckets.
    if (c != bin) {
      ++counted[bin];
      if (c == kRankClasses) {
        places[x] = kUnranked;
        return;
      }
      --counted[c];
    }
    std::size_t const place = BucketOf(v, c);
    ++buckets[place].size;
    places[x] = static_cast<RankPlace>(place);
  };
  EachBin(src, count, Min(), range, add, [&](int x) { places[x] = kUnranked; });
}

// The edges rise but for the last one, which counts for the last class alone. Beyond it there is no class.
std::size_t RankClasses::ClassOf(double v, std::size_t bin) const {
  std::size_t c = bin;
  while (c > 0 && v < edges[c]) --c;
  while (c < kRankClasses && v >= edges[c + 1]) ++c;
  return c;
}

// v lies between the edges of its class, so the product is neither negative nor much above the number of buckets.
std::size_t RankClasses::BucketOf(double v, std::size_t c) const {
  Division const& division = divisions[c];
  int const part = static_cast<int>((v - division.min) * division.scale);
  return static_cast<std::size_t>(division.first + std::min(part, division.last));
}

bool RankClasses::Count() {
  sizes.fill(0);
  for (RankBucket const& bucket : buckets) sizes[bucket.rankClass] += bucket.size;
  for (std::size_t c = 0; c < kRankClasses; ++c) counted[c] += sizes[c];
  for (std::size_t c = 0; c < kRankClasses; ++c) room[c] = KeptOf(c);
  return room != sizes;
}

// Intended: what passes a class's count by more than the margin is dropped, and so is a class without a count.
std::size_t RankClasses::KeptOf(std::size_t c) const {
  return IsCounted(c) ? std::min(SizeOf(c), counted[c] + kMargin) : 0;
}

void RankClasses::DropFromRow(int count, RankPlace* places) {
  for (int x = 0; x < count; ++x) {
    if (places[x] == kUnranked) continue;
    RankBucket& bucket = buckets[places[x]];
    if (room[bucket.rankClass] > 0) {
      --room[bucket.rankClass];
    } else {
      --bucket.size;
      places[x] = kUnranked;
    }
  }
}

}  // namespace orb
