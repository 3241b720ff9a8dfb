#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include <orbimg/core/row_kernel.h>
#include <orbimg/geometry/cubic_grid_internal.h>

namespace {

// Below this size a mirrored position can lie beyond the other side and be extrapolated.
constexpr int kLeastMirrored = 3;

double Mirror(double u, int size) {
  if (u < 0) return -u;
  if (u > size - 1) return (static_cast<double>(size) - 1) - (u - size);
  return u;
}

// Whether the exponent has all its bits, in any of the samples.
ORB_ROW_KERNEL bool IsFiniteRow(float const* row, std::ptrdiff_t count) {
  constexpr std::uint32_t kExponent = 0x7f800000u;
  std::uint32_t found = 0;
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    std::uint32_t bits;
    std::memcpy(&bits, row + i, sizeof bits);
    found |= (bits & kExponent) == kExponent ? 1u : 0u;
  }
  return found == 0;
}

// A sum that begins with 0.0 is never -0.0.
ORB_ROW_KERNEL void DropSignOfZeroRow(float* row, std::ptrdiff_t count) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) row[i] = row[i] + 0.0f;
}

}  // namespace

namespace orb {

double CubicWeight(double t) {
  double const a = std::abs(t);
  double const square = a * a;
  double const cube = square * a;
  if (a < 1.0) return 1.0 - 2.0 * square + cube;
  if (a < 2.0) return 4.0 - 8.0 * a + 5.0 * square - cube;
  return 0.0;
}

CubicTaps::CubicTaps(double position, int size) {
  double const end = position + 2;
  for (double u = position - 1; u <= end && count < 4; u += 1.0) {
    double const mirrored = Mirror(u, size);
    taps[count++] = Tap{mirrored, FindCell(mirrored, size), CubicWeight(u - position)};
  }
  isSingle = size >= kLeastMirrored && count > 1;
  for (int i = 0; i < count; ++i) isSingle = isSingle && taps[i].weight == (i == 1 ? 1.0 : 0.0);
}

int CubicTaps::First() const {
  int first = taps[0].place.cell;
  for (int i = 1; i < count; ++i) first = std::min(first, taps[i].place.cell);
  return first;
}

int CubicTaps::Last(int size) const {
  int last = 0;
  for (int i = 0; i < count; ++i) last = std::max(last, taps[i].place.cell + 1);
  return std::min(last, size - 1);
}

std::vector<CubicTaps> MakeCubicTaps(int oldSize, int newSize, int sourceSize) {
  double const ratio = static_cast<double>(oldSize) / newSize;
  std::vector<CubicTaps> taps;
  taps.reserve(static_cast<std::size_t>(newSize));
  for (int i = 0; i < newSize; ++i) taps.emplace_back(i * ratio, sourceSize);
  return taps;
}

float CubicSum(COrbImage const& source, int plane, CubicTaps const& column, CubicTaps const& row) {
  int const nextColumn = source.GetWidth() > 1 ? 1 : 0;
  int const nextRow = source.GetHeight() > 1 ? 1 : 0;
  double sum = 0.0;
  for (int j = 0; j < row.count; ++j) {
    CellPosition const y = row.taps[j].place;
    float const* const a = source.GetImageAdr(0, y.cell, plane, 1, nullptr);
    float const* const b = source.GetImageAdr(0, y.cell + nextRow, plane, 1, nullptr);
    for (int i = 0; i < column.count; ++i) {
      CellPosition const x = column.taps[i].place;
      double const sample = x.whole && y.whole ? a[x.cell]
                                               : InterpolateCell(a[x.cell], a[x.cell + nextColumn], b[x.cell],
                                                                 b[x.cell + nextColumn], x.fraction, y.fraction);
      float const value = static_cast<float>(sample);
      sum += row.taps[j].weight * column.taps[i].weight * value;
    }
  }
  return static_cast<float>(sum);
}

GridColumns MainColumns(std::vector<CubicTaps> const& taps, int sourceWidth) {
  std::vector<double> positions;
  positions.reserve(taps.size());
  for (CubicTaps const& column : taps) positions.push_back(column.taps[1].position);
  return GridColumns(positions, sourceWidth);
}

CubicRows::CubicRows(COrbImage const& initSource, std::vector<CubicTaps> const& initTaps, GridColumns const& columns,
                     int initPlane)
    : source(initSource),
      taps(initTaps),
      plane(initPlane),
      grid(source, columns, plane),
      states(static_cast<std::size_t>(source.GetHeight()), RowState::kUnknown),
      notFinite(static_cast<std::size_t>(source.GetWidth()) + 1) {
  for (std::size_t x = 0; x < taps.size(); ++x) {
    if (!taps[x].IsSingle()) notSingle.push_back(x);
  }
}

bool CubicRows::IsFinite(int y) {
  RowState& state = states[static_cast<std::size_t>(y)];
  if (state == RowState::kUnknown) {
    float const* const row = source.GetImageAdr(0, y, plane, 1, nullptr);
    state = IsFiniteRow(row, source.GetWidth()) ? RowState::kFinite : RowState::kNotFinite;
  }
  return state == RowState::kFinite;
}

bool CubicRows::ReachesOnlyFinite(CubicTaps const& row) {
  int const last = row.Last(source.GetHeight());
  for (int y = row.First(); y <= last; ++y) {
    if (!IsFinite(y)) return false;
  }
  return true;
}

void CubicRows::CountNotFinite(CubicTaps const& row) {
  std::fill(notFinite.begin(), notFinite.end(), 0);
  int const last = row.Last(source.GetHeight());
  for (int y = row.First(); y <= last; ++y) {
    if (IsFinite(y)) continue;
    float const* const samples = source.GetImageAdr(0, y, plane, 1, nullptr);
    for (std::size_t x = 1; x < notFinite.size(); ++x) {
      if (!std::isfinite(samples[x - 1])) notFinite[x] = 1;
    }
  }
  for (std::size_t x = 1; x < notFinite.size(); ++x) notFinite[x] += notFinite[x - 1];
}

bool CubicRows::ReachesOnlyFiniteColumns(CubicTaps const& column) const {
  int const last = column.Last(source.GetWidth());
  return notFinite[static_cast<std::size_t>(column.First())] == notFinite[static_cast<std::size_t>(last) + 1];
}

void CubicRows::Sample(CubicTaps const& row, float* out) {
  if (!row.IsSingle()) {
    for (std::size_t x = 0; x < taps.size(); ++x) out[x] = CubicSum(source, plane, taps[x], row);
    return;
  }
  grid.Sample(row.taps[1].place, out);
  DropSignOfZeroRow(out, static_cast<std::ptrdiff_t>(taps.size()));
  for (std::size_t const x : notSingle) out[x] = CubicSum(source, plane, taps[x], row);
  if (ReachesOnlyFinite(row)) return;
  CountNotFinite(row);
  for (std::size_t x = 0; x < taps.size(); ++x) {
    if (!ReachesOnlyFiniteColumns(taps[x])) out[x] = CubicSum(source, plane, taps[x], row);
  }
}

}  // namespace orb
