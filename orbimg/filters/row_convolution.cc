#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <type_traits>

#include <orbimg/core/row_kernel.h>
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

// Columns begin .. end - 1 of a row, the nearest one where there is none.
void CopyClamped(float const* row, int width, std::ptrdiff_t begin, std::ptrdiff_t end, float* out) {
  std::ptrdiff_t const first = std::clamp<std::ptrdiff_t>(0, begin, end);
  std::ptrdiff_t const last = std::clamp<std::ptrdiff_t>(width, first, end);
  std::fill(out, out + (first - begin), row[0]);
  std::copy(row + first, row + last, out + (first - begin));
  std::fill(out + (last - begin), out + (end - begin), row[width - 1]);
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
  // Where the kernel lies inside the row.
  int const inside = std::clamp(m, begin, end);
  int const outside = std::clamp(width - m, inside, end);
  if (isWide) {
    ComputeNarrow(rows, begin, inside, out);
    ComputeInside(rows, inside, outside, out + (inside - begin));
    ComputeNarrow(rows, outside, end, out + (outside - begin));
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
  // A product of 0 changes no sum of finite samples, which begins with 0.0 and so never is -0.0.
  bool const doSkip = 4 * zeroWeights > places.size() && AreFinite(rows, begin - m, end + m);
  taps.clear();
  for (Place const& place : places) {
    if (doSkip && place.weight == 0.0) continue;
    taps.push_back(Tap{place.weight, rows[place.row] + begin + place.dx});
  }
  SumTapsRow(taps.data(), taps.size(), end - begin, out);
}

bool RowConvolution::AreFinite(float* const* rows, int begin, int end) const {
  for (int k = windowRadius - m; k <= windowRadius + m; ++k) {
    if (!IsFiniteRow(rows[k] + begin, end - begin)) return false;
  }
  return true;
}

// Columns first, by exact products, then rows.
void RowConvolution::ComputeFactored(float* const* rows, int begin, int end, float* out) {
  sums.resize(static_cast<std::size_t>(kSumColumns + 2 * m));
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
