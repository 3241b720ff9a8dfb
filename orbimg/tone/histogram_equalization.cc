#include <orbimg/tone/histogram_equalization.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <vector>

#include <orbimg/core/operator_run.h>
#include <orbimg/tone/histogram_equalization_kernels.h>
#include <orbimg/tone/rank_classes_internal.h>
#include <orbimg/tone/rank_sorter_internal.h>
#include <platform/large_pages_internal.h>
#include <platform/random_numbers_internal.h>

namespace {

constexpr int kMessage = 6177;
constexpr int kUnits = 258;
constexpr int kMostPlanes = 3;  // that have extrema
constexpr int kBlock = 256;     // columns

// The keys of hundreds of buckets and more are walked side by side, each bucket in places of its own, which the
// processor does not foresee: the next cache line of a bucket is asked for beforehand.
constexpr std::size_t kKeysAhead = 8;

// Room for one value of each sample; large pages matter for the same reason.
template <typename Value>
std::unique_ptr<Value[]> ScratchOf(std::size_t samples) {
  auto scratch = std::make_unique_for_overwrite<Value[]>(samples);
  orb::AskForLargePages(scratch.get(), samples * sizeof(Value));
  return scratch;
}

// One plane, in steps over all its samples: classes, buckets, keys, ranks.
class PlaneEqualizer {
 public:
  PlaneEqualizer(COrbImage& initImage, COrbImage const& initSource, int initPlane)
      : image(initImage),
        source(initSource),
        plane(initPlane),
        width(initImage.GetWidth()),
        height(initImage.GetHeight()),
        samples(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}

  void Copy() {
    for (int y = 0; y < height; ++y) std::copy_n(SourceRow(y), width, ImageRow(y));
  }

  void Equalize(double min, double max) {
    places = ScratchOf<orb::RankPlace>(samples);
    keys = ScratchOf<std::uint64_t>(samples);
    orb::RankClasses classes(min, max);
    Classify(classes);
    MakeKeys(classes);
    Rank(classes);
    WriteLevels(classes);
  }

 private:
  float const* SourceRow(int y) const { return source.GetImageAdr(0, y, plane, 1, nullptr); }
  float* ImageRow(int y) { return image.GetImageAdr(0, y, plane, 0, nullptr); }
  orb::RankPlace* PlacesOf(int y) {
    return places.get() + static_cast<std::size_t>(width) * static_cast<std::size_t>(y);
  }

  void Classify(orb::RankClasses& classes) {
    constexpr int kRowsLookedAt = 32;
    int const step = std::max(height / kRowsLookedAt, 1);
    for (int y = 0; y < height; y += step) classes.LookAt(SourceRow(y), width);
    classes.Divide(1.0 / step);
    for (int y = 0; y < height; ++y) classes.AddRow(SourceRow(y), width, PlacesOf(y));
    if (!classes.Count()) return;
    for (int y = 0; y < height; ++y) classes.DropFromRow(width, PlacesOf(y));
  }

  // One number for each sample of a class, in the order of the plane; those that were dropped are drawn in vain.
  static void DrawTies(orb::RankClasses const& classes, float* ties) {
    for (std::size_t c = 0; c < orb::kRankClasses; ++c) {
      if (!classes.IsCounted(c)) continue;
      orb::DrawRandom(classes.KeptOf(c), ties);
      orb::SkipRandom(classes.SizeOf(c) - classes.KeptOf(c));
      ties += classes.KeptOf(c);
    }
  }

  // Where the samples of each bucket begin, among all in the order of the buckets.
  static std::vector<std::size_t> BeginsOf(orb::RankClasses const& classes) {
    std::vector<std::size_t> begins;
    std::size_t next = 0;
    for (orb::RankBucket const& bucket : classes.Buckets()) {
      begins.push_back(next);
      next += bucket.size;
    }
    return begins;
  }

  // Whether this image's plane can hold the ties until it gets its levels: where no sample keeps what it was, and none
  // of the source's stands in the same memory.
  bool IsFreeForTies(orb::RankClasses const& classes, float const* own) const {
    std::size_t ranked = 0;
    for (std::size_t c = 0; c < orb::kRankClasses; ++c) ranked += classes.KeptOf(c);
    float const* const other = SourceRow(0);
    return ranked == samples &&
           (std::less_equal<>()(own + samples, other) || std::less_equal<>()(other + samples, own));
  }

  void MakeKeys(orb::RankClasses const& classes) {
    orb::LockedRow const own(image, 0, 0, plane, false);
    std::unique_ptr<float[]> scratch;
    float* ties = own.Address();
    if (!IsFreeForTies(classes, ties)) {
      scratch = ScratchOf<float>(samples);
      ties = scratch.get();
    }
    DrawTies(classes, ties);
    MakeKeys(classes, ties);
  }

  void MakeKeys(orb::RankClasses const& classes, float const* ties) {
    float const* nextTies[orb::kRankClasses];
    for (std::size_t c = 0; c < orb::kRankClasses; ++c) {
      nextTies[c] = ties;
      ties += classes.KeptOf(c);
    }
    orb::RankBucket const* const buckets = classes.Buckets().data();
    std::vector<std::size_t> next = BeginsOf(classes);
    for (int y = 0; y < height; ++y) {
      float const* const row = SourceRow(y);
      orb::RankPlace const* const rowPlaces = PlacesOf(y);
      for (int x = 0; x < width; ++x) {
        std::size_t const place = rowPlaces[x];
        if (place == orb::kUnranked) continue;
        std::size_t const at = next[place]++;
        __builtin_prefetch(keys.get() + at + kKeysAhead, 1);
        keys[at] = orb::RankKey(row[x], *nextTies[buckets[place].rankClass]++);
      }
    }
  }

  // Each key becomes its sample's rank in the plane.
  void Rank(orb::RankClasses const& classes) {
    orb::RankSorter sorter;
    std::size_t first = 0;
    std::size_t bucket = 0;
    for (std::size_t c = 0; c < orb::kRankClasses; ++c) {
      for (; bucket < classes.Buckets().size() && classes.Buckets()[bucket].rankClass == c; ++bucket) {
        std::size_t const size = classes.Buckets()[bucket].size;
        sorter.Rank(keys.get() + first, size, first);
        first += size;
      }
      if (classes.IsCounted(c)) image.ShowProgress(1);
    }
  }

  void WriteLevels(orb::RankClasses const& classes) {
    std::vector<std::size_t> next = BeginsOf(classes);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; x += kBlock) {
        WriteBlock(classes, PlacesOf(y) + x, std::min(width - x, kBlock), next, ImageRow(y) + x);
      }
    }
  }

  void WriteBlock(orb::RankClasses const& classes, orb::RankPlace const* blockPlaces, int columns,
                  std::vector<std::size_t>& next, float* out) {
    double ranks[kBlock];
    float levels[kBlock];
    for (int x = 0; x < columns; ++x) {
      std::size_t const place = blockPlaces[x];
      ranks[x] = 0.0;
      if (place == orb::kUnranked) continue;
      std::size_t const at = next[place]++;
      __builtin_prefetch(keys.get() + at + kKeysAhead, 0);
      ranks[x] = static_cast<double>(static_cast<std::int64_t>(keys[at]));
    }
    orb::RankLevelRow(ranks, columns, classes.Range(), static_cast<double>(samples), classes.Min(), levels);
    for (int x = 0; x < columns; ++x) {
      if (blockPlaces[x] != orb::kUnranked) out[x] = levels[x];
    }
  }

  COrbImage& image;
  COrbImage const& source;
  int plane;
  int width;
  int height;
  std::size_t samples;
  std::unique_ptr<orb::RankPlace[]> places;  // of each sample of the plane
  std::unique_ptr<std::uint64_t[]> keys;     // in the order of the buckets, then ranks
};

}  // namespace

int CImgHstEql::Do(COrbImage* source) {
  source->CalcMinMax();
  for (int p = 0; p < std::min(source->GetPlanes(), kMostPlanes); ++p) {
    double const min = source->GetMinPixel(p);
    double const max = source->GetMaxPixel(p);
    double const range = max - min;
    source->SetLevel(p, min, max);
    ShowProgressInit(1, kMessage, kUnits);
    PlaneEqualizer equalizer(*this, *source, p);
    if (range > 0.0 && std::isfinite(range)) {
      equalizer.Equalize(min, max);
    } else {
      equalizer.Copy();
    }
    ShowProgressEnd(static_cast<char const*>(nullptr));
  }
  return 1;
}
