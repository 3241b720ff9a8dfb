#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <type_traits>

#include <orbimg/core/row_kernel.h>
#include <orbimg/filters/clamped_columns_internal.h>
#include <orbimg/filters/row_convolution_internal.h>

namespace orb {

namespace {

constexpr int kSumColumns = 512;   // of a block of column sums: short enough for the first cache
constexpr int kLeastFactored = 3;  // radius from which two steps are faster than one
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// Whether no sample is infinite or not a number.
ORB_ROW_KERNEL bool IsFiniteRow(float const* samples, std::ptrdiff_t count) {
  constexpr std::uint32_t kExponent = 0x7f800000;
  std::uint32_t found = 0;
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    found |= (std::bit_cast<std::uint32_t>(samples[x]) & kExponent) == kExponent ? 1u : 0u;
  }
  return found == 0;
}

}  // namespace

RowConvolution::RowConvolution(CFilterKernel const& kernel, int initWindowRadius, int initWidth, Sums sumsAs)
    : windowRadius(initWindowRadius),
      width(initWidth),
      m(std::min(initWindowRadius, kernel.radius)),
      isWide(initWindowRadius == kernel.radius && kernel.count > 0) {
  for (int dy = -m; dy <= m; ++dy) {
    for (int dx = -m; dx <= m; ++dx) places.push_back(Place{kernel.Value(dx, dy), windowRadius + dy, dx});
  }
  zeroWeights = static_cast<std::size_t>(
      std::count_if(places.begin(), places.end(), [](Place const& place) { return place.weight == 0.0; }));
  if (sumsAs == Sums::kFactored && isWide && m >= kLeastFactored) factored.emplace(kernel);
  if (factored && !factored->IsFaithful()) factored.reset();
  if (isWide) sides.emplace(kernel, width);
  taps.reserve(places.size());
}

void RowConvolution::Compute(float* const* rows, int begin, int end, double* out) { ComputeAll(rows, begin, end, out); }

void RowConvolution::Compute(float* const* rows, int begin, int end, float* out) { ComputeAll(rows, begin, end, out); }

void RowConvolution::ComputeClipped(float* const* rows, int begin, int end, float lo, float hi, float* out) {
  if (begin >= end) return;
  if (m == 0) {
    std::fill_n(out, end - begin, 0.0f);
  } else {
    SumPadded(rows, begin, end, lo, hi, true, out);
  }
}

template <typename Out>
void RowConvolution::ComputeAll(float* const* rows, int begin, int end, Out* out) {
  if (begin >= end) return;
  if (m == 0 && !isWide) {
    std::fill_n(out, end - begin, Out{0});
    return;
  }
  if (isWide) {
    Inside const inside = InsideOf(begin, end);
    ComputeNarrow(rows, begin, inside.begin, out);
    ComputeInside(rows, inside.begin, inside.end, out + (inside.begin - begin));
    ComputeNarrow(rows, inside.end, end, out + (inside.end - begin));
  } else {
    ComputeNarrow(rows, begin, end, out);
  }
}

template <typename Out>
void RowConvolution::ComputeInside(float* const* rows, int begin, int end, Out* out) {
  if (begin >= end) return;
  if constexpr (std::is_same_v<Out, float>) {
    if (factored) return ComputeFactored(rows, begin, end, out);
  }
  bool const doSkip = DoSkipZeros(rows + windowRadius - m, 2 * m + 1, begin - m, end + m);
  taps.clear();
  for (Place const& place : places) {
    if (doSkip && place.weight == 0.0) continue;
    taps.push_back(Tap{place.weight, rows[place.row] + begin + place.dx});
  }
  SumTapsRow(taps.data(), taps.size(), end - begin, out);
}

// A product of 0 changes no sum of finite samples, which begins with 0.0 and so never is -0.0.
bool RowConvolution::DoSkipZeros(float* const* rows, int rowCount, int begin, int end) const {
  if (4 * zeroWeights <= places.size()) return false;
  return std::all_of(rows, rows + rowCount, [=](float const* row) { return IsFiniteRow(row + begin, end - begin); });
}

RowConvolution::Inside RowConvolution::InsideOf(int begin, int end) const {
  int const first = std::clamp(m, begin, end);
  return {first, std::clamp(width - m, first, end)};
}

void RowConvolution::StartBand(float* const* rows, int rowCount, int begin, int end) {
  if (begin >= end) return;
  Inside const inside = InsideOf(begin, end);
  sides->Sum(rows, rowCount, begin, inside.begin, inside.end, end);
}

void RowConvolution::ComputeInBand(float* const* rows, int row, int begin, int end, float* out) {
  if (begin >= end) return;
  Inside const inside = InsideOf(begin, end);
  ComputeInside(rows, inside.begin, inside.end, out + (inside.begin - begin));
  sides->CopyRow(row, out);
}

void RowConvolution::ComputeFourInBand(float* const* rows, int row, int begin, int end, float* const* out) {
  Inside const inside = InsideOf(begin, end);
  if (begin >= end || inside.end - inside.begin < kLeastColumns) {
    for (int j = 0; j < kRowsAtOnce; ++j) ComputeInBand(rows + j, row + j, begin, end, out[j]);
    return;
  }
  std::ptrdiff_t const first = inside.begin - begin;
  float* const from[] = {out[0] + first, out[1] + first, out[2] + first, out[3] + first};
  if (factored) {
    ComputeFourFactored(rows, inside.begin, inside.end, from);
  } else {
    ComputeFourInside(rows, inside.begin, inside.end, from);
  }
  for (int j = 0; j < kRowsAtOnce; ++j) sides->CopyRow(row + j, out[j]);
}

void RowConvolution::ComputeFourInside(float* const* rows, int begin, int end, float* const* out) {
  bool const doSkip = DoSkipZeros(rows, 2 * m + kRowsAtOnce, begin - m, end + m);
  int const size = 2 * m + 1;
  ListFourRows([&](int row, int i) { return places[static_cast<std::size_t>(row * size + i)].weight; }, size, doSkip,
               rows, begin - m);
  SumFourRows(fourLists, 0, end - begin, out);
}

// `columns` taps a row from column x on. Row k of the window is row k - j of the table for row j of the results.
template <typename WeightAt>
void RowConvolution::ListFourRows(WeightAt weightAt, int columns, bool doSkip, float* const* rows, int x) {
  int const rowCount = 2 * m + kRowsAtOnce;
  fourTaps.clear();
  fourTaps.reserve(static_cast<std::size_t>(rowCount * columns));  // lists point into it
  fourLists.clear();
  for (int k = 0; k < rowCount; ++k) {
    int const first = std::max(0, k - 2 * m);
    int const last = std::min(kRowsAtOnce - 1, k);
    FourRowTap const* list = fourTaps.data() + fourTaps.size();
    for (int i = 0; i < columns; ++i) {
      FourRowTap tap{{}, rows[k] + x + i};
      bool isNeeded = !doSkip;
      for (int j = first; j <= last; ++j) {
        tap.weights[j] = weightAt(k - j, i);
        isNeeded = isNeeded || tap.weights[j] != 0.0;
      }
      if (isNeeded) fourTaps.push_back(tap);
    }
    // Taken by the same rows as the list before: one list with it.
    if (!fourLists.empty() && fourLists.back().first == first && fourLists.back().last == last) {
      list = fourLists.back().taps.data();
      fourLists.pop_back();
    }
    fourLists.push_back(FourRowTaps{first, last, {list, fourTaps.data() + fourTaps.size()}});
  }
}

void RowConvolution::ComputeFourFactored(float* const* rows, int begin, int end, float* const* out) {
  // Blocks of about the same size, so that none is too short.
  int const blocks = (end - begin + kSumColumns - 1) / kSumColumns;
  int const blockColumns = (end - begin + blocks - 1) / blocks;
  std::ptrdiff_t const stride = kSumColumns + 2 * std::ptrdiff_t{m};
  sums.resize(std::max(sums.size(), static_cast<std::size_t>(kRowsAtOnce * stride)));
  double* const sumRows[] = {sums.data(), sums.data() + stride, sums.data() + 2 * stride, sums.data() + 3 * stride};
  ListFourRows([&](int row, int) { return factored->RowFactors()[static_cast<std::size_t>(row)]; }, 1, false, rows,
               begin - m);
  for (int x = begin; x < end; x += blockColumns) {
    int const count = std::min(blockColumns, end - x);
    SumFourRows(fourLists, x - begin, count + 2 * m, sumRows);
    for (int j = 0; j < kRowsAtOnce; ++j) {
      FoldRow(sumRows[j] + m, factored->ColumnFactors().data(), m, count, out[j] + (x - begin));
    }
  }
}

// Columns first, by exact products, then rows.
void RowConvolution::ComputeFactored(float* const* rows, int begin, int end, float* out) {
  sums.resize(std::max(sums.size(), static_cast<std::size_t>(kSumColumns + 2 * m)));
  for (int x = begin; x < end; x += kSumColumns) {
    int const count = std::min(kSumColumns, end - x);
    taps.clear();
    for (int k = 0; k <= 2 * m; ++k) {
      taps.push_back(Tap{factored->RowFactors()[static_cast<std::size_t>(k)], rows[k] + x - m});
    }
    SumTapsRow(taps.data(), taps.size(), count + 2 * m, sums.data());
    FoldRow(sums.data() + m, factored->ColumnFactors().data(), m, count, out + (x - begin));
  }
}

template <typename Out>
void RowConvolution::ComputeNarrow(float* const* rows, int begin, int end, Out* out) {
  if (begin >= end) return;
  if constexpr (std::is_same_v<Out, float>) {
    SumPadded(rows, begin, end, -kInfinity, kInfinity, false, out);
  } else {
    narrow.resize(std::max(narrow.size(), static_cast<std::size_t>(end - begin)));
    SumPadded(rows, begin, end, -kInfinity, kInfinity, false, narrow.data());
    std::copy_n(narrow.data(), end - begin, out);
  }
}

// The rows with their columns clamped, m more on either side, side by side in one block.
void RowConvolution::SumPadded(float* const* rows, int begin, int end, float lo, float hi, bool doClip, float* out) {
  std::ptrdiff_t const stride = end - begin + 2 * std::ptrdiff_t{m};
  padded.resize(std::max(padded.size(), static_cast<std::size_t>(stride * (2 * m + 1))));
  for (int k = 0; k <= 2 * m; ++k) {
    float const* const row = rows[windowRadius - m + k];
    float* const to = padded.data() + k * stride;
    CopyClamped(row, width, std::ptrdiff_t{begin} - m, std::ptrdiff_t{end} + m, to);
    if (doClip) ClipRow(to, stride, lo, hi, to);
  }
  taps.clear();
  for (Place const& place : places) {
    float const* const row = padded.data() + (place.row - windowRadius + m) * stride;
    taps.push_back(Tap{place.weight, row + m + place.dx});
  }
  SumTapsNarrowRow(taps.data(), taps.size(), end - begin, out);
}

}  // namespace orb
