#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include <orbimg/core/bilinear_internal.h>
#include <orbimg/stacking/matching_kernels.h>
#include <orbimg/stacking/matching_metric_internal.h>

namespace orb {

namespace {

// Columns and rows of the reference, ends exclusive.
struct Area {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;

  bool IsEmpty() const { return left >= right || top >= bottom; }
  bool operator==(Area const&) const = default;
  double Count() const { return static_cast<double>(right - left) * static_cast<double>(bottom - top); }
};

Area Intersect(Area const& a, Area const& b) {
  return Area{std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
              std::min(a.bottom, b.bottom)};
}

// The smallest area that holds both.
Area Unite(Area const& a, Area const& b) {
  if (a.IsEmpty()) return b;
  if (b.IsEmpty()) return a;
  return Area{std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
              std::max(a.bottom, b.bottom)};
}

// Where `sourceSize` samples, the first of them at `shift`, cover 0 .. size - 1. Out of order where they do not.
void FindOverlap(std::int64_t shift, int sourceSize, int size, int& begin, int& end) {
  begin = static_cast<int>(std::clamp<std::int64_t>(shift, 0, size));
  end = static_cast<int>(std::clamp<std::int64_t>(shift + sourceSize, 0, size));
}

// The same for a fractional shift: only where both neighbours exist. Not-a-number covers nothing.
void FindOverlap(double shift, int sourceSize, int size, int& begin, int& end) {
  double const first = std::max(std::ceil(shift), 0.0);
  double const last = std::min(std::floor(shift) + sourceSize, static_cast<double>(size));
  bool const isInside = first < last;  // then 0 <= first < last <= size
  begin = isInside ? static_cast<int>(first) : 0;
  end = isInside ? static_cast<int>(last) : 0;
}

template <typename Coordinate>
Area OverlapOf(COrbImage const& reference, COrbImage const& source, Coordinate dx, Coordinate dy) {
  Area area;
  FindOverlap(dx, source.GetWidth(), reference.GetWidth(), area.left, area.right);
  FindOverlap(dy, source.GetHeight(), reference.GetHeight(), area.top, area.bottom);
  return area.IsEmpty() ? Area() : area;
}

// Calls work(tile) for each tile that meets `area`, cut to it, and endStrip() after each strip that does.
template <typename Work, typename EndStrip>
void EachTile(Area const& area, Work work, EndStrip endStrip) {
  auto const endOf = [](std::int64_t begin, int size, int limit) {
    return static_cast<int>(std::min<std::int64_t>(begin + size, limit));
  };
  for (std::int64_t y = area.top / kTileRows * kTileRows; y < area.bottom; y += kTileRows) {
    int const top = std::max(area.top, static_cast<int>(y));
    for (std::int64_t x = area.left / kTileColumns * kTileColumns; x < area.right; x += kTileColumns) {
      int const left = std::max(area.left, static_cast<int>(x));
      work(Area{left, top, endOf(x, kTileColumns, area.right), endOf(y, kTileRows, area.bottom)});
    }
    endStrip();
  }
}

// Doubles from a cache line's start on: vector loads that straddle two lines cost twice as much.
constexpr int kLineDoubles = 8;
struct alignas(kLineDoubles * sizeof(double)) Line {
  double samples[kLineDoubles];
};
using Lines = std::vector<Line>;

int LinesOf(int doubles) { return (doubles + kLineDoubles - 1) / kLineDoubles; }

// A wide copy of part of a plane, addressed by the plane's own coordinates.
class WidePart {
 public:
  // `aligned` is a column that shall start a line.
  void Copy(COrbImage const& image, int plane, Area const& part, int aligned, double r) {
    // A remainder of either sign, as the column may lie left or right of the part.
    left = part.left - ((part.left - aligned) % kLineDoubles + kLineDoubles) % kLineDoubles;
    top = part.top;
    int const lines = LinesOf(part.right - left);
    stride = static_cast<std::ptrdiff_t>(lines) * kLineDoubles;
    storage.resize(static_cast<std::size_t>(lines) * static_cast<std::size_t>(part.bottom - part.top));
    WidenBlock(image.GetImageAdr(part.left, part.top, plane, 1, nullptr), image.GetWidth(), part.right - part.left,
               part.bottom - part.top, r, At(part.left, part.top), stride);
  }
  std::ptrdiff_t Stride() const { return stride; }
  WideBlock From(int x, int y) { return WideBlock{At(x, y), stride}; }

 private:
  double* At(int x, int y) { return reinterpret_cast<double*>(storage.data()) + ((y - top) * stride + (x - left)); }

  int left = 0;
  int top = 0;
  std::ptrdiff_t stride = 0;
  Lines storage;
};

// The partial sums of a strip, one set for each shift.
class StripSums {
 public:
  explicit StripSums(std::size_t shifts) : sums(shifts * kSetLines), total(shifts) {}

  double* For(std::size_t shift, int column) { return sums[shift * kSetLines].samples + column % kTileColumns; }
  void EndStrip() {
    for (std::size_t i = 0; i < total.size(); ++i) total[i] += FoldSums(sums[i * kSetLines].samples);
    std::fill(sums.begin(), sums.end(), Line{});
  }
  double Total(std::size_t shift) const { return total[shift]; }

 private:
  static constexpr std::size_t kSetLines = kTileColumns / kLineDoubles;

  Lines sums;
  std::vector<double> total;
};

// A whole shift that has an overlap. Ints hold it, as it is smaller than an image.
struct Candidate {
  int dx;
  int dy;
  Area overlap;
  std::size_t index;

  Area SourceOf(Area const& cell) const {
    return Area{cell.left - dx, cell.top - dy, cell.right - dx, cell.bottom - dy};
  }
  // Candidates with the same phase read the source at the same distance from a line's start.
  int Phase() const { return ((dx % kLineDoubles) + kLineDoubles) % kLineDoubles; }
};

// Adds the differences of one tile to the sums of candidates of one phase.
class PhaseGroup {
 public:
  explicit PhaseGroup(std::span<Candidate const> members) : candidates(members), jobs(members.size()) {}

  void AddTile(COrbImage const& source, int plane, double r, Area const& tile, WidePart& wideReference,
               WidePart& wideSource, StripSums& sums) {
    Area reads;
    for (Candidate const& c : candidates) {
      Area const cell = Intersect(tile, c.overlap);
      if (!cell.IsEmpty()) reads = Unite(reads, c.SourceOf(cell));
    }
    if (reads.IsEmpty()) return;
    wideSource.Copy(source, plane, reads, tile.left - candidates.front().dx, r);
    for (std::size_t i = 0; i < candidates.size();) {
      Area const cell = Intersect(tile, candidates[i].overlap);
      std::size_t count = 0;
      for (; i < candidates.size() && Intersect(tile, candidates[i].overlap) == cell; ++i) {
        Candidate const& c = candidates[i];
        if (!cell.IsEmpty()) {
          jobs[count++] =
              DifferenceJob{wideSource.From(cell.left - c.dx, cell.top - c.dy).samples, sums.For(c.index, cell.left)};
        }
      }
      if (count > 0)
        AddSquaredDifferences(wideReference.From(cell.left, cell.top), cell.right - cell.left, cell.bottom - cell.top,
                              wideSource.Stride(), jobs.data(), count);
    }
  }

 private:
  std::span<Candidate const> candidates;
  std::vector<DifferenceJob> jobs;
};

// Sorts the candidates by phase, keeping their order inside one.
std::vector<PhaseGroup> GroupByPhase(std::vector<Candidate>& candidates) {
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](Candidate const& a, Candidate const& b) { return a.Phase() < b.Phase(); });
  std::vector<PhaseGroup> groups;
  for (std::size_t begin = 0; begin < candidates.size();) {
    std::size_t end = begin;
    while (end < candidates.size() && candidates[end].Phase() == candidates[begin].Phase()) ++end;
    groups.emplace_back(std::span(candidates).subspan(begin, end - begin));
    begin = end;
  }
  return groups;
}

// One coordinate of all source positions of an overlap, `begin` being its first reference coordinate.
class CellTable {
 public:
  CellTable(int begin, int end, double shift, int sourceSize) : first(begin) {
    cells.reserve(static_cast<std::size_t>(end - begin));
    for (int i = begin; i < end; ++i) {
      CellPosition const cell = FindCell(i - shift, sourceSize);
      cells.push_back(cell);
      fractions.push_back(cell.fraction);
    }
  }
  CellPosition const& At(int i) const { return cells[static_cast<std::size_t>(i - first)]; }
  double const* FractionsFrom(int i) const { return &fractions[static_cast<std::size_t>(i - first)]; }

  // The end of the run from `begin` on in which a cell more comes with each coordinate. Runs end where rounding makes a
  // position skip a cell, and before the held last one.
  int RunEnd(int begin, int end) const {
    int i = begin + 1;
    while (i < end && At(i).cell - At(i - 1).cell == 1) ++i;
    return i;
  }

 private:
  int first;
  std::vector<CellPosition> cells;
  std::vector<double> fractions;
};

// Interpolated source values times r for the pixels of a tile, from one row of it to the next.
class InterpolatedRows {
 public:
  InterpolatedRows(COrbImage const& image, CellTable const& columnCells, CellTable const& rowCells)
      : source(image), columns(columnCells), rows(rowCells) {}

  void StartTile(int plane, Area const& area) {
    currentPlane = plane;
    tile = area;
    upperRow = lowerRow = -1;
  }

  void MakeRow(int y, double r, double* out) {
    CellPosition const& row = rows.At(y);
    LoadPair(row.cell, row.cell + (source.GetHeight() > 1 ? 1 : 0));
    InterpolateRowsRow(upper, lower, row.fraction, r, tile.right - tile.left, out);
    if (row.whole) TakeWholeColumns(row.cell, r, out);
  }

 private:
  // Rows of a tile ask for pairs that overlap, so that mostly one row is new.
  void LoadPair(int upperWanted, int lowerWanted) {
    if (upperRow != upperWanted) {
      if (lowerRow == upperWanted) {
        std::swap(upper, lower);
        std::swap(upperRow, lowerRow);
      } else {
        Load(upperWanted, upper, upperRow);
      }
    }
    if (lowerRow != lowerWanted) Load(lowerWanted, lower, lowerRow);
  }

  void Load(int row, double* out, int& loadedRow) {
    std::ptrdiff_t const next = source.GetWidth() > 1 ? 1 : 0;
    for (int x = tile.left; x < tile.right;) {
      int const end = columns.RunEnd(x, tile.right);
      float const* a = source.GetImageAdr(columns.At(x).cell, row, currentPlane, 1, nullptr);
      InterpolateColumnsRow(a, a + next, columns.FractionsFrom(x), end - x, out + (x - tile.left));
      x = end;
    }
    loadedRow = row;
  }

  // The formula would give the same, but for neighbours that are infinite or not a number.
  void TakeWholeColumns(int row, double r, double* out) const {
    for (int x = tile.left; x < tile.right; ++x) {
      CellPosition const& column = columns.At(x);
      if (column.whole) out[x - tile.left] = *source.GetImageAdr(column.cell, row, currentPlane, 1, nullptr) * r;
    }
  }

  COrbImage const& source;
  CellTable const& columns;
  CellTable const& rows;
  int currentPlane = 0;
  Area tile;
  double storage[2][kTileColumns];
  double* upper = storage[0];
  double* lower = storage[1];
  int upperRow = -1;
  int lowerRow = -1;
};

}  // namespace

MatchingMetric::MatchingMetric(COrbImage const& referenceImage, COrbImage const& sourceImage, double const* ratios)
    : reference(referenceImage),
      source(sourceImage),
      ratio(ratios),
      planes(std::min(referenceImage.GetPlanes(), sourceImage.GetPlanes())) {}

double MatchingMetric::RatioOf(int plane) const { return static_cast<float>(ratio[plane]); }

void MatchingMetric::AtWholeShifts(std::span<Shift const> shifts, std::span<double> values) const {
  std::fill(values.begin(), values.end(), kOutOfRange);
  std::vector<Candidate> candidates;
  Area all;
  for (std::size_t i = 0; i < shifts.size(); ++i) {
    Area const overlap = OverlapOf(reference, source, shifts[i].dx, shifts[i].dy);
    if (overlap.IsEmpty()) continue;
    candidates.push_back(Candidate{static_cast<int>(shifts[i].dx), static_cast<int>(shifts[i].dy), overlap, i});
    all = Unite(all, overlap);
  }
  std::vector<PhaseGroup> groups = GroupByPhase(candidates);
  StripSums sums(shifts.size());
  WidePart wideReference;
  WidePart wideSource;
  for (int p = 0; p < planes; ++p) {
    EachTile(
        all,
        [&](Area const& tile) {
          wideReference.Copy(reference, p, tile, tile.left, 1.0);
          for (PhaseGroup& group : groups) {
            group.AddTile(source, p, RatioOf(p), tile, wideReference, wideSource, sums);
          }
        },
        [&] { sums.EndStrip(); });
  }
  for (Candidate const& c : candidates) values[c.index] = sums.Total(c.index) / (c.overlap.Count() * planes);
}

double MatchingMetric::AtFractionalShift(double dx, double dy) const {
  Area const overlap = OverlapOf(reference, source, dx, dy);
  if (overlap.IsEmpty()) return kOutOfRange;
  CellTable const columns(overlap.left, overlap.right, dx, source.GetWidth());
  CellTable const rows(overlap.top, overlap.bottom, dy, source.GetHeight());
  InterpolatedRows interpolated(source, columns, rows);
  StripSums sums(1);
  WidePart wideReference;
  double values[kTileRows * kTileColumns];
  for (int p = 0; p < planes; ++p) {
    double const r = RatioOf(p);
    EachTile(
        overlap,
        [&](Area const& tile) {
          wideReference.Copy(reference, p, tile, tile.left, 1.0);
          interpolated.StartTile(p, tile);
          for (int y = tile.top; y < tile.bottom; ++y) {
            interpolated.MakeRow(y, r, values + (y - tile.top) * kTileColumns);
          }
          DifferenceJob const job{values, sums.For(0, tile.left)};
          AddSquaredDifferences(wideReference.From(tile.left, tile.top), tile.right - tile.left, tile.bottom - tile.top,
                                kTileColumns, &job, 1);
        },
        [&] { sums.EndStrip(); });
  }
  return sums.Total(0) / (overlap.Count() * planes);
}

}  // namespace orb
