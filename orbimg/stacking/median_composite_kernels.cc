#include <orbimg/stacking/median_composite_kernels.h>

#include <algorithm>
#include <bit>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

// Its own inverse.
[[gnu::always_inline]] inline std::int32_t TurnBits(std::int32_t bits) { return bits ^ ((bits >> 31) & INT32_MAX); }

}  // namespace

ORB_ROW_KERNEL void LoadKeysRow(float const* samples, std::ptrdiff_t count, std::int32_t* key) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) key[x] = TurnBits(std::bit_cast<std::int32_t>(samples[x]));
}

ORB_ROW_KERNEL void FillGapsRow(std::ptrdiff_t count, std::int32_t* lows, std::int32_t* key) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    key[x] = lows[x] > 0 ? kLowestKey : kHighestKey;
    --lows[x];
  }
}

ORB_ROW_KERNEL void CountRow(std::ptrdiff_t count, std::int32_t* counts) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) ++counts[x];
}

ORB_ROW_KERNEL void ExchangeRows(std::span<Exchange const> exchanges, KeyRow* rows,
                                 std::span<std::uintptr_t const> soon) {
  std::size_t done = 0;
  std::size_t const perExchange = exchanges.empty() ? 0 : (soon.size() + exchanges.size() - 1) / exchanges.size();
  for (Exchange const& e : exchanges) {
    for (std::size_t i = 0; i < perExchange && done < soon.size(); ++i, ++done) {
      __builtin_prefetch(reinterpret_cast<void const*>(soon[done]), 0, 2);
    }
    KeyRow& a = rows[e.lower];
    KeyRow& b = rows[e.upper];
    if (e.kind == Exchange::kBoth) {
      ORB_COLUMNS_INDEPENDENT
      for (int x = 0; x < kMedianColumns; ++x) {
        std::int32_t const smaller = std::min(a[x], b[x]);
        std::int32_t const larger = std::max(a[x], b[x]);
        a[x] = smaller;
        b[x] = larger;
      }
    } else if (e.kind == Exchange::kSmaller) {
      ORB_COLUMNS_INDEPENDENT
      for (int x = 0; x < kMedianColumns; ++x) a[x] = std::min(a[x], b[x]);
    } else {
      ORB_COLUMNS_INDEPENDENT
      for (int x = 0; x < kMedianColumns; ++x) b[x] = std::max(a[x], b[x]);
    }
  }
}

ORB_ROW_KERNEL void StoreKeysRow(std::int32_t const* key, std::ptrdiff_t count, float* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) out[x] = std::bit_cast<float>(TurnBits(key[x]));
}

}  // namespace orb
