// Order statistics of the small neighbourhoods: networks of exchanges on the samples of neighbouring columns at once.
//
// Each column's samples are sorted once and then serve all neighbourhoods that the column lies in; the sorted columns
// are merged. A merge is Batcher's odd-even merge (K. E. Batcher, Sorting networks and their applications, 1968); what
// the wanted rank does not depend on is never computed.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include <orbimg/core/row_kernel.h>
#include <orbimg/filters/sample_order_internal.h>
#include <orbimg/filters/shape_internal.h>
#include <orbimg/filters/shape_kernels.h>

namespace {

constexpr std::ptrdiff_t kLanes = 16;
constexpr std::ptrdiff_t kBlock = 512;  // columns whose sorted samples stay in the first cache
constexpr std::ptrdiff_t kRoom = kBlock + 4 + kLanes;
constexpr int kAnyRank = -1;

using Keys = std::int32_t __attribute__((vector_size(64)));

template <int kCount>
struct Sorted {
  Keys at[kCount];
};

[[gnu::always_inline]] inline void Exchange(Keys& low, Keys& high) {
  Keys const smaller = low < high ? low : high;
  high = low < high ? high : low;
  low = smaller;
}

// The entries of a at kFirst, kFirst + 2 ...
template <int kFirst, int kCount>
[[gnu::always_inline]] inline void TakeEverySecond(Sorted<kCount> const& a, Sorted<(kCount + 1 - kFirst) / 2>& half) {
  for (int i = 0; i < (kCount + 1 - kFirst) / 2; ++i) half.at[i] = a.at[2 * i + kFirst];
}

template <int kA, int kB>
[[gnu::always_inline]] inline void Merge(Sorted<kA> const& a, Sorted<kB> const& b, Sorted<kA + kB>& out) {
  if constexpr (kA == 1 && kB == 1) {
    out.at[0] = a.at[0];
    out.at[1] = b.at[0];
    Exchange(out.at[0], out.at[1]);
  } else if constexpr (kA == 1) {
    Merge(b, a, out);
  } else if constexpr (kB == 1) {
    // Both halves of a, the single entry joining the first.
    Sorted<(kA + 1) / 2> even;
    Sorted<kA / 2> odd;
    Sorted<(kA + 1) / 2 + 1> v;
    TakeEverySecond<0>(a, even);
    TakeEverySecond<1>(a, odd);
    Merge(even, b, v);
    out.at[0] = v.at[0];
    for (int i = 0; i < kA / 2; ++i) {
      out.at[2 * i + 1] = odd.at[i];
      out.at[2 * i + 2] = v.at[i + 1];
      Exchange(out.at[2 * i + 1], out.at[2 * i + 2]);
    }
    if constexpr (kA % 2 == 1) out.at[kA] = v.at[(kA + 1) / 2];
  } else {
    Sorted<(kA + 1) / 2> evenA;
    Sorted<(kB + 1) / 2> evenB;
    Sorted<kA / 2> oddA;
    Sorted<kB / 2> oddB;
    TakeEverySecond<0>(a, evenA);
    TakeEverySecond<0>(b, evenB);
    TakeEverySecond<1>(a, oddA);
    TakeEverySecond<1>(b, oddB);
    constexpr int kV = (kA + 1) / 2 + (kB + 1) / 2;
    constexpr int kW = kA / 2 + kB / 2;
    Sorted<kV> v;
    Sorted<kW> w;
    Merge(evenA, evenB, v);
    Merge(oddA, oddB, w);
    out.at[0] = v.at[0];
    constexpr int kPairs = std::min(kW, kV - 1);
    for (int i = 0; i < kPairs; ++i) {
      out.at[2 * i + 1] = w.at[i];
      out.at[2 * i + 2] = v.at[i + 1];
      Exchange(out.at[2 * i + 1], out.at[2 * i + 2]);
    }
    if constexpr (kW > kPairs) out.at[kA + kB - 1] = w.at[kPairs];
    if constexpr (kV - 1 > kPairs) out.at[kA + kB - 1] = v.at[kV - 1];
  }
}

// Three rows' samples of a column sort to 3 entries; two more rows make 5 of them.
[[gnu::always_inline]] inline void SortThree(Sorted<3>& s) {
  Exchange(s.at[0], s.at[1]);
  Exchange(s.at[1], s.at[2]);
  Exchange(s.at[0], s.at[1]);
}

[[gnu::always_inline]] inline void LoadKeys(float const* samples, std::ptrdiff_t count, Keys& keys) {
  keys = Keys{};
  if (count >= kLanes) {
    std::memcpy(&keys, samples, sizeof(keys));
  } else {
    std::memcpy(&keys, samples, static_cast<std::size_t>(count) * sizeof(float));
  }
  keys ^= (keys >> 31) & INT32_MAX;
}

[[gnu::always_inline]] inline void StoreKeys(Keys keys, std::ptrdiff_t count, float* out) {
  keys ^= (keys >> 31) & INT32_MAX;
  std::memcpy(out, &keys, static_cast<std::size_t>(std::min(count, kLanes)) * sizeof(float));
}

// The sorted samples of a block of columns, one row an entry.
template <int kCount>
struct SortedColumns {
  alignas(64) std::int32_t rows[kCount][kRoom];

  [[gnu::always_inline]] void Store(std::ptrdiff_t x, Sorted<kCount> const& sorted) {
    for (int i = 0; i < kCount; ++i) std::memcpy(&rows[i][x], &sorted.at[i], sizeof(Keys));
  }
  [[gnu::always_inline]] void Load(std::ptrdiff_t x, Sorted<kCount>& sorted) const {
    for (int i = 0; i < kCount; ++i) std::memcpy(&sorted.at[i], &rows[i][x], sizeof(Keys));
  }
};

// Intended for a rank known to the compiler, but that kAnyRank looks it up.
template <int kRank, int kCount>
[[gnu::always_inline]] inline void StoreRank(Sorted<kCount> const& sorted, int rank, std::ptrdiff_t count, float* out) {
  if constexpr (kRank == kAnyRank) {
    StoreKeys(sorted.at[rank], count, out);
  } else {
    StoreKeys(sorted.at[kRank], count, out);
  }
}

template <int kRank>
[[gnu::always_inline]] inline void CrossColumns(int rank, float const* const* rows, std::ptrdiff_t count, float* out) {
  for (std::ptrdiff_t x = 0; x < count; x += kLanes) {
    std::ptrdiff_t const left = count - x;
    Sorted<3> column;
    Sorted<2> sides;
    for (int k = 0; k < 3; ++k) LoadKeys(rows[k] + x, left, column.at[k]);
    LoadKeys(rows[1] + x - 1, left, sides.at[0]);
    LoadKeys(rows[1] + x + 1, left, sides.at[1]);
    SortThree(column);
    Exchange(sides.at[0], sides.at[1]);
    Sorted<5> all;
    Merge(column, sides, all);
    StoreRank<kRank>(all, rank, left, out + x);
  }
}

template <int kRank>
[[gnu::always_inline]] inline void SquareColumns(int rank, float const* const* rows, std::ptrdiff_t count, float* out) {
  SortedColumns<3> columns;
  for (std::ptrdiff_t begin = 0; begin < count; begin += kBlock) {
    std::ptrdiff_t const n = std::min(kBlock, count - begin);
    for (std::ptrdiff_t x = 0; x < n + 2; x += kLanes) {
      Sorted<3> column;
      for (int k = 0; k < 3; ++k) LoadKeys(rows[k] + begin + x - 1, n + 2 - x, column.at[k]);
      SortThree(column);
      columns.Store(x, column);
    }
    for (std::ptrdiff_t x = 0; x < n; x += kLanes) {
      Sorted<3> left;
      Sorted<3> centre;
      Sorted<3> right;
      columns.Load(x, left);
      columns.Load(x + 1, centre);
      columns.Load(x + 2, right);
      if constexpr (kRank == 4) {
        // The median is that of the largest first, the middle second and the smallest third entries.
        Sorted<3> first{{left.at[0], centre.at[0], right.at[0]}};
        Sorted<3> second{{left.at[1], centre.at[1], right.at[1]}};
        Sorted<3> third{{left.at[2], centre.at[2], right.at[2]}};
        SortThree(first);
        SortThree(second);
        SortThree(third);
        Sorted<3> middle{{first.at[2], second.at[1], third.at[0]}};
        SortThree(middle);
        StoreKeys(middle.at[1], n - x, out + begin + x);
      } else {
        Sorted<6> two;
        Sorted<9> all;
        Merge(left, centre, two);
        Merge(two, right, all);
        StoreRank<kRank>(all, rank, n - x, out + begin + x);
      }
    }
  }
}

template <int kRank>
[[gnu::always_inline]] inline void RoundColumns(int rank, float const* const* rows, std::ptrdiff_t count, float* out) {
  SortedColumns<3> shortOnes;  // of the outermost columns
  SortedColumns<5> longOnes;
  for (std::ptrdiff_t begin = 0; begin < count; begin += kBlock) {
    std::ptrdiff_t const n = std::min(kBlock, count - begin);
    for (std::ptrdiff_t x = 0; x < n + 4; x += kLanes) {
      Sorted<3> inner;
      Sorted<2> outer;
      for (int k = 0; k < 3; ++k) LoadKeys(rows[k + 1] + begin + x - 2, n + 4 - x, inner.at[k]);
      LoadKeys(rows[0] + begin + x - 2, n + 4 - x, outer.at[0]);
      LoadKeys(rows[4] + begin + x - 2, n + 4 - x, outer.at[1]);
      SortThree(inner);
      Exchange(outer.at[0], outer.at[1]);
      Sorted<5> all;
      Merge(inner, outer, all);
      shortOnes.Store(x, inner);
      longOnes.Store(x, all);
    }
    for (std::ptrdiff_t x = 0; x < n; x += kLanes) {
      Sorted<3> left;
      Sorted<3> right;
      Sorted<5> a;
      Sorted<5> b;
      Sorted<5> c;
      shortOnes.Load(x, left);
      longOnes.Load(x + 1, a);
      longOnes.Load(x + 2, b);
      longOnes.Load(x + 3, c);
      shortOnes.Load(x + 4, right);
      Sorted<6> sides;
      Sorted<10> two;
      Sorted<15> three;
      Sorted<21> all;
      Merge(left, right, sides);
      Merge(a, b, two);
      Merge(two, c, three);
      Merge(three, sides, all);
      StoreRank<kRank>(all, rank, n - x, out + begin + x);
    }
  }
}

}  // namespace

namespace orb {

#define ORB_RANK_ROW(name, columns, rank_known)                                                           \
  static ORB_ROW_KERNEL void name(int rank, float const* const* rows, std::ptrdiff_t count, float* out) { \
    columns<rank_known>(rank, rows, count, out);                                                          \
  }
ORB_RANK_ROW(CrossMinimumRow, CrossColumns, 0)
ORB_RANK_ROW(CrossMedianRow, CrossColumns, 2)
ORB_RANK_ROW(CrossMaximumRow, CrossColumns, 4)
ORB_RANK_ROW(CrossAnyRow, CrossColumns, kAnyRank)
ORB_RANK_ROW(SquareMinimumRow, SquareColumns, 0)
ORB_RANK_ROW(SquareMedianRow, SquareColumns, 4)
ORB_RANK_ROW(SquareMaximumRow, SquareColumns, 8)
ORB_RANK_ROW(SquareAnyRow, SquareColumns, kAnyRank)
ORB_RANK_ROW(RoundMinimumRow, RoundColumns, 0)
ORB_RANK_ROW(RoundMedianRow, RoundColumns, 10)
ORB_RANK_ROW(RoundMaximumRow, RoundColumns, 20)
ORB_RANK_ROW(RoundAnyRow, RoundColumns, kAnyRank)
#undef ORB_RANK_ROW

namespace {

using RankRow = void (*)(int rank, float const* const* rows, std::ptrdiff_t count, float* out);

struct RankRows {
  RankRow minimum;
  RankRow median;
  RankRow maximum;
  RankRow any;
};

}  // namespace

void RankShapeRow(int shape, int rank, float const* const* rows, std::ptrdiff_t count, float* out) {
  static constexpr RankRows kOfShape[] = {
      {CrossMinimumRow, CrossMedianRow, CrossMaximumRow, CrossAnyRow},
      {SquareMinimumRow, SquareMedianRow, SquareMaximumRow, SquareAnyRow},
      {RoundMinimumRow, RoundMedianRow, RoundMaximumRow, RoundAnyRow},
  };
  RankRows const& of = kOfShape[shape];
  int const last = static_cast<int>(CellsOf(shape).size()) - 1;
  RankRow const row = rank == 0 ? of.minimum : rank == last / 2 ? of.median : rank == last ? of.maximum : of.any;
  row(rank, rows, count, out);
}

}  // namespace orb
