#include <orbimg/stacking/median_composite_kernels.h>

#include <algorithm>
#include <bit>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

constexpr std::uintptr_t kCacheLine = 64;  // bytes

// Its own inverse.
[[gnu::always_inline]] inline std::int32_t TurnBits(std::int32_t bits) { return bits ^ ((bits >> 31) & INT32_MAX); }

}  // namespace

ORB_ROW_KERNEL void LoadKeysRow(float const* samples, std::ptrdiff_t count, std::int32_t* key) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) key[x] = TurnBits(std::bit_cast<std::int32_t>(samples[x]));
}

ORB_ROW_KERNEL void LoadKeyRows(std::span<float const* const> samples, std::ptrdiff_t begin, std::ptrdiff_t count,
                                KeyRow* rows) {
  for (float const* const row : samples) {
    std::int32_t* const key = *rows++;
    float const* const from = row + begin;
    if (count == kMedianColumns) {
      ORB_COLUMNS_INDEPENDENT
      for (int x = 0; x < kMedianColumns; ++x) key[x] = TurnBits(std::bit_cast<std::int32_t>(from[x]));
    } else {
      ORB_COLUMNS_INDEPENDENT
      for (std::ptrdiff_t x = 0; x < count; ++x) key[x] = TurnBits(std::bit_cast<std::int32_t>(from[x]));
    }
  }
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
  // Evenly spread, as only so many requests can wait at a time.
  std::size_t const step = soon.empty() ? 0 : std::max<std::size_t>(exchanges.size() / soon.size(), 1);
  std::size_t next = 0;
  std::size_t countdown = 0;
  for (Exchange const& e : exchanges) {
    if (next < soon.size() && countdown-- == 0) {
      for (std::uintptr_t i = 0; i < sizeof(KeyRow); i += kCacheLine) {
        __builtin_prefetch(reinterpret_cast<void const*>(soon[next] + i), 0, 2);
      }
      ++next;
      countdown = step - 1;
    }
    KeyRow& a = rows[e.lower];
    KeyRow& b = rows[e.upper];
    if (e.kind == Exchange::kBoth) {
      ORB_COLUMNS_INDEPENDENT
      for (int x = 0; x < kMedianColumns; ++x) {
        std::int32_t const p = a[x];
        std::int32_t const q = b[x];
        a[x] = p < q ? p : q;
        b[x] = p > q ? p : q;
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
