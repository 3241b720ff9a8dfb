#include <orbimg/restoration/fourier_kernels.h>

#include <algorithm>
#include <cmath>

#include <orbimg/core/row_kernel.h>
#include <orbimg/restoration/reversed_index_internal.h>

namespace orb {

namespace {

constexpr std::ptrdiff_t kLanes = kFourierLanes;

struct Rotation {
  double re;
  double im;
};

struct Value {
  float re;
  float im;
};

struct Pair {
  Value sum;
  Value difference;
};

// a + w b and a - w b, each rounded to floats: the values that a pass stores.
[[gnu::always_inline]] inline Pair Butterfly(Value a, Value b, Rotation w) {
  double const re = w.re * b.re - w.im * b.im;
  double const im = w.re * b.im + w.im * b.re;
  return {{static_cast<float>(a.re + re), static_cast<float>(a.im + im)},
          {static_cast<float>(a.re - re), static_cast<float>(a.im - im)}};
}

// exp(-2 pi i k/m), its sign turned for the inverse.
[[gnu::always_inline]] inline Rotation RotationOf(FourierLines const& lines, std::ptrdiff_t m, std::ptrdiff_t k) {
  float const* const w = lines.twiddles + 2 * (lines.length / m * k);
  return {w[0], lines.isInverse ? -w[1] : w[1]};
}

[[gnu::always_inline]] inline Value Get(float const* value, std::ptrdiff_t lane) {
  return {value[lane], value[kLanes + lane]};
}

[[gnu::always_inline]] inline void Put(float* value, std::ptrdiff_t lane, Value v) {
  value[lane] = v.re;
  value[kLanes + lane] = v.im;
}

// Values begin .. end - 1 of all lines: a whole number of the blocks of a pass.
struct Part {
  std::ptrdiff_t begin;
  std::ptrdiff_t end;
};

// The pass of span 1.
ORB_ROW_KERNEL void PairPass(FourierLines const& lines, Part part) {
  Rotation const w = RotationOf(lines, 2, 0);
  for (std::ptrdiff_t t = part.begin; t < part.end; t += 2) {
    float* const a = lines.block + t * kFourierValue;
    float* const b = a + kFourierValue;
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) {
      Pair const p = Butterfly(Get(a, lane), Get(b, lane), w);
      Put(a, lane, p.sum);
      Put(b, lane, p.difference);
    }
  }
}

// The passes of spans s and 2 s in one walk through memory.
ORB_ROW_KERNEL void QuadPass(FourierLines const& lines, std::ptrdiff_t s, Part part) {
  std::ptrdiff_t const span = s * kFourierValue;
  for (std::ptrdiff_t i = 0; i < s; ++i) {
    Rotation const w = RotationOf(lines, 2 * s, i);
    Rotation const near = RotationOf(lines, 4 * s, i);
    Rotation const far = RotationOf(lines, 4 * s, s + i);
    for (std::ptrdiff_t t = part.begin + i; t < part.end; t += 4 * s) {
      float* const a = lines.block + t * kFourierValue;
      float* const b = a + span;
      float* const c = b + span;
      float* const d = c + span;
      ORB_COLUMNS_INDEPENDENT
      for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) {
        Pair const p = Butterfly(Get(a, lane), Get(b, lane), w);
        Pair const q = Butterfly(Get(c, lane), Get(d, lane), w);
        Pair const n = Butterfly(p.sum, q.sum, near);
        Pair const f = Butterfly(p.difference, q.difference, far);
        Put(a, lane, n.sum);
        Put(b, lane, f.sum);
        Put(c, lane, n.difference);
        Put(d, lane, f.difference);
      }
    }
  }
}

// Has the bits of the division by a float, of which `factor` is the reciprocal. For floats x and r, the quotient x/r is
// never half way between two floats, of 25 bits: m r with an odd m of 25 bits does not fit into the 24 of x. It stays
// away from there by 2^-49 of its size at least, m r and x being integers but for powers of two; the product in double
// is off by 2^-52 at most, and rounds to the same float.
ORB_ROW_KERNEL void MultiplyBlock(float* block, std::ptrdiff_t count, double factor) {
  for (std::ptrdiff_t i = 0; i < count; ++i) block[i] = static_cast<float>(block[i] * factor);
}

// Rows of a wide plane lie in different pages, which no processor fetches ahead by itself.
constexpr std::ptrdiff_t kRowsAhead = 24;

template <int isWrite>
[[gnu::always_inline]] inline void FetchColumns(float const* row) {
  for (std::ptrdiff_t i = 0; i < kFourierValue; i += kColumnsPerCacheLine) __builtin_prefetch(row + i, isWrite);
}

constexpr std::ptrdiff_t kPartLength = 64;  // or twice that: 32 KiB

constexpr std::ptrdiff_t kTile = 8;  // complex values of a cache line

}  // namespace

void LoadRows(FourierLines const& lines, float const* rows, std::ptrdiff_t stride) {
  ReversedIndex reversed(lines.length);
  for (std::ptrdiff_t left = 0; left < lines.length; left += kTile) {
    float* values[kTile];
    for (float*& value : values) {
      value = lines.block + reversed.Value() * kFourierValue;
      reversed.Next();
    }
    for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) {
      float const* const from = rows + lane * stride + 2 * left;
      for (std::ptrdiff_t t = 0; t < kTile; ++t) Put(values[t], lane, {from[2 * t], from[2 * t + 1]});
    }
  }
}

void StoreRows(FourierLines const& lines, float* rows, std::ptrdiff_t stride) {
  for (std::ptrdiff_t left = 0; left < lines.length; left += kTile) {
    float const* const values = lines.block + left * kFourierValue;
    for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) {
      float* const to = rows + lane * stride + 2 * left;
      for (std::ptrdiff_t t = 0; t < kTile; ++t) {
        Value const v = Get(values + t * kFourierValue, lane);
        to[2 * t] = v.re;
        to[2 * t + 1] = v.im;
      }
    }
  }
}

ORB_ROW_KERNEL void LoadColumns(FourierLines const& lines, float const* columns, std::ptrdiff_t stride) {
  ReversedIndex reversed(lines.length);
  for (std::ptrdiff_t y = 0; y < lines.length; ++y) {
    float const* const from = columns + y * stride;
    FetchColumns<0>(columns + std::min(y + kRowsAhead, lines.length - 1) * stride);
    float* const value = lines.block + reversed.Value() * kFourierValue;
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) Put(value, lane, {from[2 * lane], from[2 * lane + 1]});
    reversed.Next();
  }
}

ORB_ROW_KERNEL void StoreColumns(FourierLines const& lines, float* columns, std::ptrdiff_t stride) {
  for (std::ptrdiff_t y = 0; y < lines.length; ++y) {
    float* const to = columns + y * stride;
    FetchColumns<1>(columns + std::min(y + kRowsAhead, lines.length - 1) * stride);
    float const* const value = lines.block + y * kFourierValue;
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) {
      Value const v = Get(value, lane);
      to[2 * lane] = v.re;
      to[2 * lane + 1] = v.im;
    }
  }
}

// The passes of short spans are done part by part: a part stays in the nearest cache.
void TransformBlock(FourierLines const& lines) {
  std::ptrdiff_t const first = lines.log2Length % 2 == 0 ? 1 : 2;  // span after a pass of span 1, or without
  std::ptrdiff_t part = first;
  while (part < kPartLength && part < lines.length) part *= 4;
  for (std::ptrdiff_t begin = 0; begin < lines.length; begin += part) {
    if (first == 2) PairPass(lines, {begin, begin + part});
    for (std::ptrdiff_t s = first; s < part; s *= 4) QuadPass(lines, s, {begin, begin + part});
  }
  for (std::ptrdiff_t s = part; s < lines.length; s *= 4) QuadPass(lines, s, {0, lines.length});
  double const root = static_cast<float>(std::sqrt(static_cast<double>(lines.length)));
  MultiplyBlock(lines.block, lines.length * kFourierValue, 1.0 / root);
}

}  // namespace orb
