// The classes of value in which the equalisation ranks samples, and the buckets into which large classes are divided.
//
// Three walks over the rows of a plane, of which only the second is needed: LookAt some rows and Divide; AddRow for all
// and Count; and if that says so, DropFromRow for all.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace orb {

// The number of a sample's bucket.
using RankPlace = std::uint16_t;

inline constexpr RankPlace kUnranked = 0xFFFF;
inline constexpr int kRankClasses = 257;

// A part of a class, of neighbouring values. The numbers of buckets rise with the values.
struct RankBucket {
  std::size_t rankClass;
  std::size_t size = 0;
};

class RankClasses {
 public:
  // min < max, both finite.
  RankClasses(double min, double max);

  // Guesses from some rows, `share` of all, where the samples are. Decides nothing but the speed.
  void LookAt(float const* src, int count);
  void Divide(double share);

  // Writes the bucket of each sample.
  void AddRow(float const* src, int count, RankPlace* places);
  // Whether there are classes with more samples than they keep.
  bool Count();
  // Takes those that are too many out of their buckets. Rows in the order of the plane.
  void DropFromRow(int count, RankPlace* places);

  double Min() const { return edges[0]; }
  double Range() const { return range; }
  // Whether the formula for the number of the class counts samples in it.
  bool IsCounted(std::size_t c) const { return counted[c] > 0; }
  // Samples between its edges.
  std::size_t SizeOf(std::size_t c) const { return sizes[c]; }
  // Those of them that get a rank: the first ones of the plane.
  std::size_t KeptOf(std::size_t c) const;
  std::vector<RankBucket> const& Buckets() const { return buckets; }

 private:
  // How a class is divided.
  struct Division {
    double min;
    double scale;  // buckets a raw unit
    int last;      // of its buckets, counted from the first
    int first;
  };

  std::size_t ClassOf(double v, std::size_t bin) const;
  std::size_t BucketOf(double v, std::size_t c) const;

  double range;
  std::array<double, kRankClasses + 1> edges;
  std::array<std::size_t, kRankClasses> counted{};  // until Count: less those in the buckets, modulo 2^64
  std::array<std::size_t, kRankClasses> sizes{};
  std::array<std::size_t, kRankClasses> room{};  // that is left while dropping
  std::array<Division, kRankClasses> divisions;
  std::vector<RankBucket> buckets;
};

}  // namespace orb
