// z = x^(-1/n) without a power function, for rows of columns: a guess out of the exponent's bits, improved in float,
// then once in double. With e = 1 - x z^n, the next z is z (1 - e)^(-1/n) cut after its third term:
//
//   z (1 + e (1/n + e (n + 1) / (2 n^2)))
//
// which turns an error e into about e^3 / 6. Good to about two units in the last place of a double for x between 1e-30
// and 1e30; for anything else the result is some number of no meaning.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include <orbimg/core/row_kernel.h>

namespace orb {

template <int n, typename Number>
[[gnu::always_inline]] inline Number Power(Number z) {
  if constexpr (n == 1) {
    return z;
  } else if constexpr (n % 2 == 0) {
    Number const half = Power<n / 2>(z);
    return half * half;
  } else {
    return Power<n - 1>(z) * z;
  }
}

template <int n, typename Number>
[[gnu::always_inline]] inline Number ImproveInverseRoot(Number x, Number z) {
  constexpr Number kFirst = static_cast<Number>(1.0 / n);
  constexpr Number kSecond = static_cast<Number>((n + 1.0) / (2.0 * n * n));
  Number const e = 1 - x * Power<n>(z);
  return z + z * (e * (kFirst + e * kSecond));
}

// To about seven digits; `z` has room for `count`.
template <int n>
[[gnu::always_inline]] inline void GuessInverseRoots(double const* x, std::ptrdiff_t count, float* z) {
  // The bits of a float, read as an integer, are nearly 2^23 (log2 x + 127 - 0.045), the last number halving the
  // largest error of the chord. So the root's bits are a constant less one n-th of x's. All sums stay within an int.
  constexpr float kUnit = static_cast<float>((127.0 - 0.0450465) * (1 << 23) * (1.0 + 1.0 / n));
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    float const v = static_cast<float>(x[i]);
    float const bits = static_cast<float>(std::bit_cast<std::int32_t>(v));
    float const guess = std::bit_cast<float>(static_cast<std::int32_t>(kUnit - bits * (1.0f / n)));
    z[i] = ImproveInverseRoot<n>(v, ImproveInverseRoot<n>(v, guess));
  }
}

}  // namespace orb
