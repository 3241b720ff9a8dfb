#include <orbimg/tone/histogram_equalization.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <vector>

#include <orbimg/tone/histogram_equalization_kernels.h>
#include <orbimg/tone/rank_classes_internal.h>
#include <orbimg/tone/rank_sorter_internal.h>
#include <platform/large_pages_internal.h>

namespace {

constexpr int kMessage = 6177;
constexpr int kUnits = 258;
constexpr int kMostPlanes = 3;  // that have extrema

// Room for one value of each sample. The samples of hundreds of buckets are written side by side, each to pages of its
// own, which is why large pages matter.
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
    levels = ScratchOf<float>(samples);
    keys = ScratchOf<std::uint64_t>(samples);
    orb::RankClasses classes(min, max);
    Classify(classes);
    DrawTies(classes);
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
  void DrawTies(orb::RankClasses const& classes) {
    float* next = levels.get();
    for (std::size_t c = 0; c < orb::kRankClasses; ++c) {
      std::size_t const kept = classes.KeptOf(c);
      for (std::size_t i = 0; i < kept; ++i) *next++ = static_cast<float>(std::rand());
      for (std::size_t i = kept; classes.IsCounted(c) && i < classes.SizeOf(c); ++i) static_cast<void>(std::rand());
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

  void MakeKeys(orb::RankClasses const& classes) {
    std::size_t nextTies[orb::kRankClasses];
    std::size_t first = 0;
    for (std::size_t c = 0; c < orb::kRankClasses; ++c) {
      nextTies[c] = first;
      first += classes.KeptOf(c);
    }
    orb::RankBucket const* const buckets = classes.Buckets().data();
    std::vector<std::size_t> next = BeginsOf(classes);
    for (int y = 0; y < height; ++y) {
      float const* const row = SourceRow(y);
      orb::RankPlace const* const rowPlaces = PlacesOf(y);
      for (int x = 0; x < width; ++x) {
        std::size_t const place = rowPlaces[x];
        if (place == orb::kUnranked) continue;
        keys[next[place]++] = orb::RankKey(row[x], levels[nextTies[buckets[place].rankClass]++]);
      }
    }
  }

  // The levels of all samples in the order of the buckets, in the place of the ties.
  void Rank(orb::RankClasses const& classes) {
    orb::RankSorter sorter;
    std::size_t first = 0;
    std::size_t bucket = 0;
    for (std::size_t c = 0; c < orb::kRankClasses; ++c) {
      for (; bucket < classes.Buckets().size() && classes.Buckets()[bucket].rankClass == c; ++bucket) {
        std::size_t const size = classes.Buckets()[bucket].size;
        RankBucketAt(first, size, classes, sorter);
        first += size;
      }
      if (classes.IsCounted(c)) image.ShowProgress(1);
    }
  }

  void RankBucketAt(std::size_t first, std::size_t count, orb::RankClasses const& classes, orb::RankSorter& sorter) {
    constexpr std::size_t kBlock = 256;
    float ofRanks[kBlock];
    std::size_t const* const sorted = sorter.Sort(keys.get() + first, count);
    for (std::size_t begin = 0; begin < count; begin += kBlock) {
      std::size_t const block = std::min(count - begin, kBlock);
      orb::RankLevelRow(first + begin, static_cast<std::ptrdiff_t>(block), classes.Range(),
                        static_cast<double>(samples), classes.Min(), ofRanks);
      for (std::size_t i = 0; i < block; ++i) levels[first + sorted[begin + i]] = ofRanks[i];
    }
  }

  void WriteLevels(orb::RankClasses const& classes) {
    std::vector<std::size_t> next = BeginsOf(classes);
    for (int y = 0; y < height; ++y) {
      float* const row = ImageRow(y);
      orb::RankPlace const* const rowPlaces = PlacesOf(y);
      for (int x = 0; x < width; ++x) {
        if (rowPlaces[x] != orb::kUnranked) row[x] = levels[next[rowPlaces[x]]++];
      }
    }
  }

  COrbImage& image;
  COrbImage const& source;
  int plane;
  int width;
  int height;
  std::size_t samples;
  std::unique_ptr<orb::RankPlace[]> places;  // of each sample of the plane
  std::unique_ptr<float[]> levels;           // first the ties in the order of the classes
  std::unique_ptr<std::uint64_t[]> keys;     // in the order of the buckets
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
