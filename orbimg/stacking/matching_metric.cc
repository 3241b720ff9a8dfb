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

// Samples from a cache line's start on: vector loads that straddle two lines cost twice as much.
constexpr int kLineBytes = 64;
template <typename Sample>
constexpr int kLineSamples = kLineBytes / static_cast<int>(sizeof(Sample));
template <typename Sample>
struct alignas(kLineBytes) Line {
  Sample samples[kLineSamples<Sample>];
};
template <typename Sample>
using Lines = std::vector<Line<Sample>>;

// The remainder of either sign, brought to 0 .. size - 1.
int Wrap(int value, int size) { return (value % size + size) % size; }

// A scaled copy of part of a plane, addressed by the plane's own coordinates.
template <typename Sample>
class ScaledPart {
 public:
  // `aligned` is a column that shall start a line; it may lie left or right of the part.
  void Copy(COrbImage const& image, int plane, Area const& part, int aligned, double r) {
    left = part.left - Wrap(part.left - aligned, kLine);
    top = part.top;
    int const lines = (part.right - left + kLine - 1) / kLine;
    stride = static_cast<std::ptrdiff_t>(lines) * kLine;
    storage.resize(static_cast<std::size_t>(lines) * static_cast<std::size_t>(part.bottom - part.top));
    ScaleBlock(image.GetImageAdr(part.left, part.top, plane, 1, nullptr), image.GetWidth(), part.right - part.left,
               part.bottom - part.top, r, At(part.left, part.top), stride);
  }
  std::ptrdiff_t Stride() const { return stride; }
  Block<Sample> From(int x, int y) { return Block<Sample>{At(x, y), stride}; }

 private:
  static constexpr int kLine = kLineSamples<Sample>;

  Sample* At(int x, int y) { return reinterpret_cast<Sample*>(storage.data()) + ((y - top) * stride + (x - left)); }

  int left = 0;
  int top = 0;
  std::ptrdiff_t stride = 0;
  Lines<Sample> storage;
};

// The partial sums of a strip, one set for each shift.
template <typename Sample>
class StripSums {
 public:
  explicit StripSums(std::size_t shifts) : sums(shifts * kSetLines), total(shifts) {}

  Sample* For(std::size_t shift, int column) { return sums[shift * kSetLines].samples + column % kTileColumns; }
  void EndStrip() {
    for (std::size_t i = 0; i < total.size(); ++i) total[i] += FoldSums(sums[i * kSetLines].samples);
    std::fill(sums.begin(), sums.end(), Line<Sample>{});
  }
  double Total(std::size_t shift) const { return total[shift]; }

 private:
  static constexpr std::size_t kSetLines = kTileColumns / kLineSamples<Sample>;

  Lines<Sample> sums;
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
};
using Candidates = std::vector<Candidate>;

// Adds the differences of one tile to the sums of candidates of one phase: those that read the source at the same
// distance from a line's start.
template <typename Sample>
class PhaseGroup {
 public:
  static int PhaseOf(Candidate const& candidate) { return Wrap(candidate.dx, kLineSamples<Sample>); }

  explicit PhaseGroup(std::span<Candidate const> members) : candidates(members), jobs(members.size()) {}

  void AddTile(COrbImage const& source, int plane, double r, Area const& tile, ScaledPart<Sample>& referencePart,
               ScaledPart<Sample>& sourcePart, StripSums<Sample>& sums) {
    Area reads;
    for (Candidate const& c : candidates) {
      Area const cell = Intersect(tile, c.overlap);
      if (!cell.IsEmpty()) reads = Unite(reads, c.SourceOf(cell));
    }
    if (reads.IsEmpty()) return;
    sourcePart.Copy(source, plane, reads, tile.left - candidates.front().dx, r);
    for (std::size_t i = 0; i < candidates.size();) {
      Area const cell = Intersect(tile, candidates[i].overlap);
      std::size_t count = 0;
      for (; i < candidates.size() && Intersect(tile, candidates[i].overlap) == cell; ++i) {
        Candidate const& c = candidates[i];
        if (!cell.IsEmpty()) {
          jobs[count++] = DifferenceJob<Sample>{sourcePart.From(cell.left - c.dx, cell.top - c.dy).samples,
                                                sums.For(c.index, cell.left)};
        }
      }
      if (count > 0)
        AddSquaredDifferences(referencePart.From(cell.left, cell.top), cell.right - cell.left, cell.bottom - cell.top,
                              sourcePart.Stride(), jobs.data(), count);
    }
  }

 private:
  std::span<Candidate const> candidates;
  std::vector<DifferenceJob<Sample>> jobs;
};

// Sorts the candidates by phase, keeping their order inside one.
template <typename Sample>
std::vector<PhaseGroup<Sample>> GroupByPhase(Candidates& candidates) {
  auto const phaseOf = PhaseGroup<Sample>::PhaseOf;
  std::stable_sort(candidates.begin(), candidates.end(),
                   [&](Candidate const& a, Candidate const& b) { return phaseOf(a) < phaseOf(b); });
  std::vector<PhaseGroup<Sample>> groups;
  for (std::size_t begin = 0; begin < candidates.size();) {
    std::size_t end = begin;
    while (end < candidates.size() && phaseOf(candidates[end]) == phaseOf(candidates[begin])) ++end;
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

Candidates FindCandidates(COrbImage const& reference, COrbImage const& source, std::span<Shift const> shifts) {
  Candidates candidates;
  for (std::size_t i = 0; i < shifts.size(); ++i) {
    Area const overlap = OverlapOf(reference, source, shifts[i].dx, shifts[i].dy);
    if (overlap.IsEmpty()) continue;
    candidates.push_back(Candidate{static_cast<int>(shifts[i].dx), static_cast<int>(shifts[i].dy), overlap, i});
  }
  return candidates;
}

// The sums of squared differences of all planes, in the order of the shifts. Sorts the candidates.
template <typename Sample>
StripSums<Sample> SumDifferences(COrbImage const& reference, COrbImage const& source, std::span<double const> ratios,
                                 Candidates& candidates, std::size_t shifts) {
  Area all;
  for (Candidate const& c : candidates) all = Unite(all, c.overlap);
  std::vector<PhaseGroup<Sample>> groups = GroupByPhase<Sample>(candidates);
  StripSums<Sample> sums(shifts);
  ScaledPart<Sample> referencePart;
  ScaledPart<Sample> sourcePart;
  for (std::size_t p = 0; p < ratios.size(); ++p) {
    int const plane = static_cast<int>(p);
    EachTile(
        all,
        [&](Area const& tile) {
          referencePart.Copy(reference, plane, tile, tile.left, 1.0);
          for (PhaseGroup<Sample>& group : groups) {
            group.AddTile(source, plane, ratios[p], tile, referencePart, sourcePart, sums);
          }
        },
        [&] { sums.EndStrip(); });
  }
  return sums;
}

double SumSquares(COrbImage const& image, int plane) {
  double sums[kTileColumns] = {};
  for (int y = 0; y < image.GetHeight(); ++y) {
    AddSquaresRow(image.GetImageAdr(0, y, plane, 1, nullptr), image.GetWidth(), sums);
  }
  return FoldSums(sums);
}

// How far the metric can be from the sum that floats gave. With u the rounding of a float, a difference d' of floats
// stands for the difference d:
//
//   d' = (reference - source * r * (1 + <u)) * (1 + <u)
//
// so that the lengths of all d' and of all d, as vectors, are apart by at most u times the lengths of d and of
// source * r. The sum of the d'^2 itself is off by u for each of its terms at most. The factors beside the bare ones
// make up for what the bounds, and the metric in doubles, lose by rounding of their own.
class FloatRounding {
 public:
  FloatRounding(double lengthOfSource, int planes) : sourceLength(lengthOfSource), planeCount(planes) {}

  ValueRange RangeOf(double sum, Area const& overlap) const {
    double const terms = kTileRows * (static_cast<double>(overlap.right - overlap.left) / kTileColumns + 2.0);
    double const slack = 1.25 * terms * kUnit;
    if (!std::isfinite(sum) || !std::isfinite(sourceLength) || slack > kMostSlack) return ValueRange{};
    double const count = overlap.Count() * planeCount;
    double const shortest = std::sqrt(std::max(0.0, sum * (1.0 - slack) - count * kTiny));
    double const longest = std::sqrt(sum * (1.0 + slack) + count * kTiny);
    double const offset = 1.01 * kUnit * sourceLength + std::sqrt(count) * kTiny;
    double const low = std::max(0.0, shortest * (1.0 - 2.0 * kUnit) - offset);
    double const high = longest * (1.0 + 2.0 * kUnit) + offset;
    return ValueRange{low * low / count, high * high / count};
  }

 private:
  static constexpr double kUnit = 0x1p-24;
  static constexpr double kTiny = 0x1p-148;  // above what a product or square loses that is too small for a float
  static constexpr double kMostSlack = 0.01;

  double sourceLength;
  int planeCount;
};

}  // namespace

MatchingMetric::MatchingMetric(COrbImage const& referenceImage, COrbImage const& sourceImage, double const* ratio)
    : reference(referenceImage), source(sourceImage) {
  int const planes = std::min(referenceImage.GetPlanes(), sourceImage.GetPlanes());
  for (int p = 0; p < planes; ++p) ratios.push_back(static_cast<float>(ratio[p]));
}

void MatchingMetric::AtWholeShifts(std::span<Shift const> shifts, std::span<double> values) const {
  std::fill(values.begin(), values.end(), kOutOfRange);
  Candidates candidates = FindCandidates(reference, source, shifts);
  auto const sums = SumDifferences<double>(reference, source, ratios, candidates, shifts.size());
  for (Candidate const& c : candidates) values[c.index] = sums.Total(c.index) / (c.overlap.Count() * Planes());
}

void MatchingMetric::BoundAtWholeShifts(std::span<Shift const> shifts, std::span<ValueRange> ranges) {
  if (!sourceLength.has_value()) sourceLength = FindSourceLength();
  std::fill(ranges.begin(), ranges.end(), ValueRange{kOutOfRange, kOutOfRange});
  Candidates candidates = FindCandidates(reference, source, shifts);
  auto const sums = SumDifferences<float>(reference, source, ratios, candidates, shifts.size());
  FloatRounding const rounding(*sourceLength, Planes());
  for (Candidate const& c : candidates) ranges[c.index] = rounding.RangeOf(sums.Total(c.index), c.overlap);
}

double MatchingMetric::FindSourceLength() const {
  double sum = 0.0;
  for (int p = 0; p < Planes(); ++p) {
    double const r = ratios[static_cast<std::size_t>(p)];
    sum += SumSquares(source, p) * r * r;
  }
  return std::sqrt(sum);
}

double MatchingMetric::AtFractionalShift(double dx, double dy) const {
  Area const overlap = OverlapOf(reference, source, dx, dy);
  if (overlap.IsEmpty()) return kOutOfRange;
  CellTable const columns(overlap.left, overlap.right, dx, source.GetWidth());
  CellTable const rows(overlap.top, overlap.bottom, dy, source.GetHeight());
  InterpolatedRows interpolated(source, columns, rows);
  StripSums<double> sums(1);
  ScaledPart<double> referencePart;
  double values[kTileRows * kTileColumns];
  for (int p = 0; p < Planes(); ++p) {
    double const r = ratios[static_cast<std::size_t>(p)];
    EachTile(
        overlap,
        [&](Area const& tile) {
          referencePart.Copy(reference, p, tile, tile.left, 1.0);
          interpolated.StartTile(p, tile);
          for (int y = tile.top; y < tile.bottom; ++y) {
            interpolated.MakeRow(y, r, values + (y - tile.top) * kTileColumns);
          }
          DifferenceJob<double> const job{values, sums.For(0, tile.left)};
          AddSquaredDifferences(referencePart.From(tile.left, tile.top), tile.right - tile.left, tile.bottom - tile.top,
                                kTileColumns, &job, 1);
        },
        [&] { sums.EndStrip(); });
  }
  return sums.Total(0) / (overlap.Count() * Planes());
}

}  // namespace orb
