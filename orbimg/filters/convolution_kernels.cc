// This source is compiled with products and sums contracted into fused operations: every product here is a float times
// a weight of at most 29 bits and so exact in a double, and a fused operation rounds like the two it stands for.
#include <orbimg/filters/convolution_kernels.h>

#include <algorithm>

#include <orbimg/filters/widest_clones_internal.h>

namespace {

using orb::Tap;

constexpr std::ptrdiff_t kBlock = 512;  // columns whose sums stay in the first cache

// sums[x] += weight * samples[x], one tap after the other, for kTaps taps at a time so that a sum is fetched once.
template <int kTaps, typename Sum>
[[gnu::always_inline]] inline void AddTaps(Tap const* taps, std::ptrdiff_t begin, std::ptrdiff_t count, Sum* sums) {
  float const* samples[kTaps];
  double weights[kTaps];
  for (int t = 0; t < kTaps; ++t) {
    samples[t] = taps[t].samples + begin;
    weights[t] = taps[t].weight;
  }
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    Sum sum = sums[x];
    for (int t = 0; t < kTaps; ++t) {
      sum = static_cast<Sum>(static_cast<double>(sum) + weights[t] * static_cast<double>(samples[t][x]));
    }
    sums[x] = sum;
  }
}

// Functions of their own, one a kind: a compiler that sees them all in one loop joins them, and then makes no vectors.
ORB_WIDEST_CLONES void AddEight(Tap const* taps, std::ptrdiff_t begin, std::ptrdiff_t count, double* sums) {
  AddTaps<8>(taps, begin, count, sums);
}
ORB_WIDEST_CLONES void AddThree(Tap const* taps, std::ptrdiff_t begin, std::ptrdiff_t count, double* sums) {
  AddTaps<3>(taps, begin, count, sums);
}
ORB_WIDEST_CLONES void AddOne(Tap const* taps, std::ptrdiff_t begin, std::ptrdiff_t count, double* sums) {
  AddTaps<1>(taps, begin, count, sums);
}
// Sums of float are narrowed after each term.
ORB_WIDEST_CLONES void AddEight(Tap const* taps, std::ptrdiff_t begin, std::ptrdiff_t count, float* sums) {
  AddTaps<8>(taps, begin, count, sums);
}
ORB_WIDEST_CLONES void AddThree(Tap const* taps, std::ptrdiff_t begin, std::ptrdiff_t count, float* sums) {
  AddTaps<3>(taps, begin, count, sums);
}
ORB_WIDEST_CLONES void AddOne(Tap const* taps, std::ptrdiff_t begin, std::ptrdiff_t count, float* sums) {
  AddTaps<1>(taps, begin, count, sums);
}

ORB_WIDEST_CLONES void Narrow(double const* sums, std::ptrdiff_t count, float* out) {
  for (std::ptrdiff_t x = 0; x < count; ++x) out[x] = static_cast<float>(sums[x]);
}

template <typename Sum>
void SumBlock(Tap const* taps, std::size_t tapCount, std::ptrdiff_t begin, std::ptrdiff_t count, Sum* sums) {
  std::fill_n(sums, count, Sum{0});
  std::size_t t = 0;
  for (; t + 8 <= tapCount; t += 8) AddEight(taps + t, begin, count, sums);
  for (; t + 3 <= tapCount; t += 3) AddThree(taps + t, begin, count, sums);
  for (; t < tapCount; ++t) AddOne(taps + t, begin, count, sums);
}

// Calls block(begin, count) for the blocks of a row.
template <typename Block>
void EachBlockOf(std::ptrdiff_t count, Block block) {
  for (std::ptrdiff_t begin = 0; begin < count; begin += kBlock) block(begin, std::min(kBlock, count - begin));
}

}  // namespace

namespace orb {

void SumTapsRow(Tap const* taps, std::size_t tapCount, std::ptrdiff_t count, double* out) {
  EachBlockOf(count, [&](std::ptrdiff_t begin, std::ptrdiff_t n) { SumBlock(taps, tapCount, begin, n, out + begin); });
}

void SumTapsRow(Tap const* taps, std::size_t tapCount, std::ptrdiff_t count, float* out) {
  alignas(64) double sums[kBlock];
  EachBlockOf(count, [&](std::ptrdiff_t begin, std::ptrdiff_t n) {
    SumBlock(taps, tapCount, begin, n, sums);
    Narrow(sums, n, out + begin);
  });
}

void SumTapsNarrowRow(Tap const* taps, std::size_t tapCount, std::ptrdiff_t count, float* out) {
  EachBlockOf(count, [&](std::ptrdiff_t begin, std::ptrdiff_t n) { SumBlock(taps, tapCount, begin, n, out + begin); });
}

}  // namespace orb
