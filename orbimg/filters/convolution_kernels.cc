// This source is compiled with products and sums contracted into fused operations: every product here is a float times
// a weight of at most 29 bits and so exact in a double, and a fused operation rounds like the two it stands for.
#include <orbimg/filters/convolution_kernels.h>

#include <orbimg/filters/row_vectors_internal.h>
#include <orbimg/filters/widest_clones_internal.h>

namespace {

using orb::Doubles;
using orb::Floats;
using orb::kLanes;
using orb::Tap;

constexpr std::ptrdiff_t kColumns = 4 * kLanes;  // four sums at once hide the time that one addition takes

#define ORB_LOAD(vector, address) std::memcpy(&(vector), (address), sizeof(vector))

template <typename Out>
[[gnu::always_inline]] inline void StoreLanes(Doubles const& sum, Out* out) {
  if constexpr (sizeof(Out) == sizeof(double)) {
    std::memcpy(out, &sum, sizeof(sum));
  } else {
    Floats const narrow = __builtin_convertvector(sum, Floats);
    std::memcpy(out, &narrow, sizeof(narrow));
  }
}

template <typename Out>
[[gnu::always_inline]] inline void SumTaps(Tap const* taps, std::size_t tapCount, std::ptrdiff_t count, Out* out) {
  orb::EachColumnBlock<kColumns>(
      count,
      [=](std::ptrdiff_t x) __attribute__((always_inline)) {
        Doubles a{}, b{}, c{}, d{};
        for (std::size_t t = 0; t < tapCount; ++t) {
          float const* const samples = taps[t].samples + x;
          double const weight = taps[t].weight;
          Floats s0, s1, s2, s3;
          ORB_LOAD(s0, samples);
          ORB_LOAD(s1, samples + kLanes);
          ORB_LOAD(s2, samples + 2 * kLanes);
          ORB_LOAD(s3, samples + 3 * kLanes);
          a += weight * __builtin_convertvector(s0, Doubles);
          b += weight * __builtin_convertvector(s1, Doubles);
          c += weight * __builtin_convertvector(s2, Doubles);
          d += weight * __builtin_convertvector(s3, Doubles);
        }
        StoreLanes(a, out + x);
        StoreLanes(b, out + x + kLanes);
        StoreLanes(c, out + x + 2 * kLanes);
        StoreLanes(d, out + x + 3 * kLanes);
      },
      [=](std::ptrdiff_t x) __attribute__((always_inline)) {
        double sum = 0.0;
        for (std::size_t t = 0; t < tapCount; ++t) sum += taps[t].weight * static_cast<double>(taps[t].samples[x]);
        out[x] = static_cast<Out>(sum);
      });
}

}  // namespace

namespace orb {

ORB_WIDEST_CLONES void SumTapsRow(Tap const* taps, std::size_t tapCount, std::ptrdiff_t count, double* out) {
  SumTaps(taps, tapCount, count, out);
}

ORB_WIDEST_CLONES void SumTapsRow(Tap const* taps, std::size_t tapCount, std::ptrdiff_t count, float* out) {
  SumTaps(taps, tapCount, count, out);
}

ORB_WIDEST_CLONES void SumTapsNarrowRow(Tap const* taps, std::size_t tapCount, std::ptrdiff_t count, float* out) {
  EachColumnBlock<kColumns>(
      count,
      [=](std::ptrdiff_t x) __attribute__((always_inline)) {
        Floats sums[4] = {};
        for (std::size_t t = 0; t < tapCount; ++t) {
          for (int i = 0; i < 4; ++i) {
            Floats samples;
            ORB_LOAD(samples, taps[t].samples + x + i * kLanes);
            Doubles const sum =
                __builtin_convertvector(sums[i], Doubles) + taps[t].weight * __builtin_convertvector(samples, Doubles);
            sums[i] = __builtin_convertvector(sum, Floats);
          }
        }
        std::memcpy(out + x, sums, sizeof(sums));
      },
      [=](std::ptrdiff_t x) __attribute__((always_inline)) {
        float sum = 0.0f;
        for (std::size_t t = 0; t < tapCount; ++t) {
          sum = static_cast<float>(static_cast<double>(sum) + taps[t].weight * static_cast<double>(taps[t].samples[x]));
        }
        out[x] = sum;
      });
}

}  // namespace orb
