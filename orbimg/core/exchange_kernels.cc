#include <orbimg/core/exchange_kernels.h>

#include <algorithm>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

constexpr std::uintptr_t kCacheLine = 64;  // bytes

}  // namespace

ORB_ROW_KERNEL void LoadKeysRow(float const* samples, std::ptrdiff_t count, std::int32_t* key) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) key[x] = KeyOf(samples[x]);
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
      for (int x = 0; x < kKeyColumns; ++x) {
        std::int32_t const p = a[x];
        std::int32_t const q = b[x];
        a[x] = p < q ? p : q;
        b[x] = p > q ? p : q;
      }
    } else if (e.kind == Exchange::kSmaller) {
      ORB_COLUMNS_INDEPENDENT
      for (int x = 0; x < kKeyColumns; ++x) a[x] = std::min(a[x], b[x]);
    } else {
      ORB_COLUMNS_INDEPENDENT
      for (int x = 0; x < kKeyColumns; ++x) b[x] = std::max(a[x], b[x]);
    }
  }
}

ORB_ROW_KERNEL void StoreKeysRow(std::int32_t const* key, std::ptrdiff_t count, float* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) out[x] = SampleOf(key[x]);
}

}  // namespace orb
