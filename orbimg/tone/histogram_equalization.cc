#include <orbimg/tone/histogram_equalization.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>

#include <orbimg/tone/histogram_equalization_kernels.h>
#include <orbimg/tone/rank_classes_internal.h>
#include <orbimg/tone/rank_sorter_internal.h>

namespace {

constexpr int kMessage = 6177;
constexpr int kUnits = 258;
constexpr int kMostPlanes = 3;  // that have extrema

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
    places = std::make_unique_for_overwrite<orb::RankPlace[]>(samples);
    levels = std::make_unique_for_overwrite<float[]>(samples);
    keys = std::make_unique_for_overwrite<std::uint64_t[]>(samples);
    orb::RankClasses classes(min, max);
    for (int y = 0; y < height; ++y) classes.AddRow(SourceRow(y), width, PlacesOf(y));
    orb::RankBuckets buckets(classes);
    for (int y = 0; y < height; ++y) buckets.AddRow(SourceRow(y), width, PlacesOf(y));
    DrawTies(classes);
    MakeKeys(classes, buckets);
    Rank(classes, buckets);
    WriteLevels(buckets);
  }

 private:
  float const* SourceRow(int y) const { return source.GetImageAdr(0, y, plane, 1, nullptr); }
  float* ImageRow(int y) { return image.GetImageAdr(0, y, plane, 0, nullptr); }
  orb::RankPlace* PlacesOf(int y) {
    return places.get() + static_cast<std::size_t>(width) * static_cast<std::size_t>(y);
  }

  // One number for each sample of a class, in the order of the plane; those beyond its room are drawn in vain.
  void DrawTies(orb::RankClasses const& classes) {
    float* next = levels.get();
    for (int c = 0; c < orb::kRankClasses; ++c) {
      std::size_t const kept = classes.KeptOf(c);
      for (std::size_t i = 0; i < kept; ++i) *next++ = static_cast<float>(std::rand());
      for (std::size_t i = kept; classes.IsCounted(c) && i < classes.SizeOf(c); ++i) static_cast<void>(std::rand());
    }
  }

  void MakeKeys(orb::RankClasses const& classes, orb::RankBuckets& buckets) {
    std::size_t nextTies[orb::kRankClasses];
    std::size_t first = 0;
    for (int c = 0; c < orb::kRankClasses; ++c) {
      nextTies[c] = first;
      first += classes.KeptOf(c);
    }
    buckets.Start();
    for (int y = 0; y < height; ++y) {
      float const* const row = SourceRow(y);
      orb::RankPlace const* const rowPlaces = PlacesOf(y);
      for (int x = 0; x < width; ++x) {
        if (rowPlaces[x] == orb::kUnranked) continue;
        orb::RankBucket& bucket = buckets[rowPlaces[x]];
        keys[bucket.next++] = orb::RankKey(row[x], levels[nextTies[bucket.rankClass]++]);
      }
    }
  }

  // The levels of all samples in the order of the buckets, in the place of the ties.
  void Rank(orb::RankClasses const& classes, orb::RankBuckets& buckets) {
    orb::RankSorter sorter;
    std::size_t bucket = 0;
    std::size_t first = 0;
    for (int c = 0; c < orb::kRankClasses; ++c) {
      for (; bucket < buckets.Count() && buckets[bucket].rankClass == c; ++bucket) {
        RankBucketAt(first, buckets.SizeOf(bucket), classes, sorter);
        first += buckets.SizeOf(bucket);
      }
      if (classes.IsCounted(c)) image.ShowProgress(1);
    }
  }

  void RankBucketAt(std::size_t first, std::size_t count, orb::RankClasses const& classes, orb::RankSorter& sorter) {
    constexpr std::size_t kBlock = 256;
    float ofRanks[kBlock];
    orb::RankSorter::Entry const* const sorted = sorter.Sort(keys.get() + first, count);
    for (std::size_t begin = 0; begin < count; begin += kBlock) {
      std::size_t const block = std::min(count - begin, kBlock);
      orb::RankLevelRow(first + begin, static_cast<std::ptrdiff_t>(block), classes.Range(),
                        static_cast<double>(samples), classes.Min(), ofRanks);
      for (std::size_t i = 0; i < block; ++i) levels[first + sorted[begin + i].place] = ofRanks[i];
    }
  }

  void WriteLevels(orb::RankBuckets& buckets) {
    buckets.Start();
    for (int y = 0; y < height; ++y) {
      float* const row = ImageRow(y);
      orb::RankPlace const* const rowPlaces = PlacesOf(y);
      for (int x = 0; x < width; ++x) {
        if (rowPlaces[x] != orb::kUnranked) row[x] = levels[buckets[rowPlaces[x]].next++];
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
