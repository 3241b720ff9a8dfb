#include <orbimg/filters/disk_median_kernels.h>

#include <algorithm>
#include <array>
#include <utility>

#include <orbimg/core/row_kernel.h>
#include <orbimg/core/selection_network_internal.h>

namespace orb {

namespace {

template <int kInputs>
constexpr auto MedianExchanges() {
  std::array<Exchange, SelectionExchanges(kInputs, kInputs / 2).size()> list;
  std::vector<Exchange> const exchanges = SelectionExchanges(kInputs, kInputs / 2);
  std::copy(exchanges.begin(), exchanges.end(), list.begin());
  return list;
}

template <int kInputs>
inline constexpr auto kMedianExchanges = MedianExchanges<kInputs>();

template <int kInputs, std::size_t kIndex>
[[gnu::always_inline]] inline void Apply(std::int32_t* v) {
  constexpr Exchange e = kMedianExchanges<kInputs>[kIndex];
  std::int32_t const p = v[e.lower];
  std::int32_t const q = v[e.upper];
  if constexpr (e.kind != Exchange::kLarger) v[e.lower] = p < q ? p : q;
  if constexpr (e.kind != Exchange::kSmaller) v[e.upper] = p > q ? p : q;
}

template <int kInputs, std::size_t... kRow, std::size_t... kIndex>
[[gnu::always_inline]] inline std::int32_t MedianAt(std::int32_t const* const* rows, std::ptrdiff_t x,
                                                    std::index_sequence<kRow...>, std::index_sequence<kIndex...>) {
  std::int32_t v[] = {rows[kRow][x]...};
  (Apply<kInputs, kIndex>(v), ...);
  return v[kInputs / 2];
}

template <int kInputs>
[[gnu::always_inline]] inline void MedianRow(std::int32_t const* const* rows, std::ptrdiff_t count, std::int32_t* out) {
  std::int32_t const* row[kInputs];
  std::copy_n(rows, kInputs, row);
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    out[x] = MedianAt<kInputs>(row, x, std::make_index_sequence<kInputs>(),
                               std::make_index_sequence<kMedianExchanges<kInputs>.size()>());
  }
}

using Rows = std::int32_t const* const*;

ORB_ROW_KERNEL void MedianOf5(Rows rows, std::ptrdiff_t count, std::int32_t* out) { MedianRow<5>(rows, count, out); }
ORB_ROW_KERNEL void MedianOf9(Rows rows, std::ptrdiff_t count, std::int32_t* out) { MedianRow<9>(rows, count, out); }
ORB_ROW_KERNEL void MedianOf13(Rows rows, std::ptrdiff_t count, std::int32_t* out) { MedianRow<13>(rows, count, out); }
ORB_ROW_KERNEL void MedianOf21(Rows rows, std::ptrdiff_t count, std::int32_t* out) { MedianRow<21>(rows, count, out); }
ORB_ROW_KERNEL void MedianOf25(Rows rows, std::ptrdiff_t count, std::int32_t* out) { MedianRow<25>(rows, count, out); }
ORB_ROW_KERNEL void MedianOf29(Rows rows, std::ptrdiff_t count, std::int32_t* out) { MedianRow<29>(rows, count, out); }

}  // namespace

MedianOfRows FindMedianOfRows(int n) {
  switch (n) {
    case 5:
      return MedianOf5;
    case 9:
      return MedianOf9;
    case 13:
      return MedianOf13;
    case 21:
      return MedianOf21;
    case 25:
      return MedianOf25;
    case 29:
      return MedianOf29;
    default:
      return nullptr;
  }
}

}  // namespace orb
