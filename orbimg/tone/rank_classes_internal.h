// The classes of value in which the equalisation ranks samples, and the buckets that divide large classes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace orb {

// Where a sample belongs: first the number of its class, then that of its bucket.
using RankPlace = std::uint16_t;

inline constexpr RankPlace kUnranked = 0xFFFF;
inline constexpr int kRankClasses = 257;

// The classes of a plane, by their edges, and how many samples each takes.
class RankClasses {
 public:
  // min < max, both finite.
  RankClasses(double min, double max);

  // Writes the class of each sample, and counts.
  void AddRow(float const* src, int count, RankPlace* places);

  double Min() const { return edges[0]; }
  double Range() const { return range; }
  double EdgeOf(int c) const { return edges[static_cast<std::size_t>(c)]; }
  // Whether the formula for the number of the class counts samples in it.
  bool IsCounted(int c) const { return counted[static_cast<std::size_t>(c)] > 0; }
  // Samples between its edges.
  std::size_t SizeOf(int c) const { return sizes[static_cast<std::size_t>(c)]; }
  // Those of them that get a rank: the first ones of the plane.
  std::size_t KeptOf(int c) const;

 private:
  RankPlace ClassOf(double v, int bin) const;

  double range;
  std::array<double, kRankClasses + 1> edges;
  std::array<std::size_t, kRankClasses + 1> counted{};
  std::array<std::size_t, kRankClasses + 1> sizes{};
};

// A part of a class, of neighbouring values.
struct RankBucket {
  int rankClass;
  std::size_t next = 0;  // where its next sample goes, among all samples in the order of the buckets
};

class RankBuckets {
 public:
  explicit RankBuckets(RankClasses const& classes);

  // From classes to buckets. All rows of the plane, in their order.
  void AddRow(float const* src, int count, RankPlace* places);
  // Starts the buckets one behind another; again for another walk over all samples.
  void Start();

  std::size_t Count() const { return buckets.size(); }
  RankBucket& operator[](std::size_t bucket) { return buckets[bucket]; }
  std::size_t SizeOf(std::size_t bucket) const { return sizes[bucket]; }

 private:
  // How a class is divided.
  struct Division {
    double min;
    double scale;      // buckets a raw unit
    std::size_t last;  // of its buckets, counted from the first
    std::size_t first;
    std::size_t room;  // samples that may still get a rank
  };

  RankPlace BucketOf(double v, Division& division);

  std::vector<Division> divisions;
  std::vector<RankBucket> buckets;
  std::vector<std::size_t> sizes;
};

}  // namespace orb
