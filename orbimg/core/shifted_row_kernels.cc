#include <orbimg/core/shifted_row_kernels.h>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include <orbimg/core/bilinear_internal.h>
#include <orbimg/core/row_kernel.h>

namespace {

using orb::RowPair;

template <typename Sample>
[[gnu::always_inline]] inline void InterpolateRun(RowPair pair, double const* fractions, double g, std::ptrdiff_t count,
                                                  Sample* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    out[i] = static_cast<Sample>(orb::InterpolateCell(pair.a0[i], pair.a1[i], pair.b0[i], pair.b1[i], fractions[i], g));
  }
}

template <typename Sample>
[[gnu::always_inline]] inline void InterpolateEvenRun(RowPair pair, double f, double g, std::ptrdiff_t count,
                                                      Sample* out) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    out[i] = static_cast<Sample>(orb::InterpolateCell(pair.a0[i], pair.a1[i], pair.b0[i], pair.b1[i], f, g));
  }
}

ORB_ROW_KERNEL void InterpolatePlainEvenRunRow(RowPair pair, double f, double g, std::ptrdiff_t count, float* out) {
  InterpolateEvenRun(pair, f, g, count, out);
}

#if defined(__x86_64__)

// As many floats as fill a vector of doubles.
constexpr std::ptrdiff_t kLanes = 8;
constexpr __mmask8 kAllLanes = 0xff;  // spelt out, as GCC 12 warns of its own header where the mask is left out

[[gnu::target("avx512f"), gnu::always_inline]] inline __m512d Widen(float const* samples) {
  return _mm512_maskz_cvtps_pd(kAllLanes, _mm256_loadu_ps(samples));
}

// The right-hand neighbours of `left`, given the eight samples that come next.
[[gnu::target("avx512f"), gnu::always_inline]] inline __m512d RightOf(__m512d left, __m512d next) {
  return _mm512_castsi512_pd(
      _mm512_maskz_alignr_epi64(kAllLanes, _mm512_castpd_si512(next), _mm512_castpd_si512(left), 1));
}

// What a compiler does not find in the loop above: each sample is widened once and serves as its neighbour's neighbour.
// Returns how many columns are done, short of the last ones that have no full vector behind them.
[[gnu::target("avx512f")]] std::ptrdiff_t InterpolateNeighbours(float const* a, float const* b, double f, double g,
                                                                std::ptrdiff_t count, float* out) {
  __m512d const right = _mm512_set1_pd(f);
  __m512d const left = _mm512_set1_pd(1 - f);
  __m512d const lower = _mm512_set1_pd(g);
  __m512d const upper = _mm512_set1_pd(1 - g);
  if (count < 2 * kLanes) return 0;
  __m512d a0 = Widen(a);
  __m512d b0 = Widen(b);
  std::ptrdiff_t i = 0;
  for (; i + 2 * kLanes <= count; i += kLanes) {
    __m512d const nextA = Widen(a + i + kLanes);
    __m512d const nextB = Widen(b + i + kLanes);
    __m512d const a1 = RightOf(a0, nextA);
    __m512d const b1 = RightOf(b0, nextB);
    __m512d const value = (a1 * right + a0 * left) * upper + (b1 * right + b0 * left) * lower;
    _mm256_storeu_ps(out + i, _mm512_maskz_cvtpd_ps(kAllLanes, value));
    a0 = nextA;
    b0 = nextB;
  }
  return i;
}

#endif

}  // namespace

namespace orb {

ORB_ROW_KERNEL void InterpolateRunRow(RowPair pair, double const* fractions, double g, std::ptrdiff_t count,
                                      float* out) {
  InterpolateRun(pair, fractions, g, count, out);
}

ORB_ROW_KERNEL void InterpolateRunRow(RowPair pair, double const* fractions, double g, std::ptrdiff_t count,
                                      double* out) {
  InterpolateRun(pair, fractions, g, count, out);
}

#if defined(__x86_64__)

void InterpolateEvenRunRow(RowPair pair, double f, double g, std::ptrdiff_t count, float* out) {
  std::ptrdiff_t done = 0;
  if (pair.a1 == pair.a0 + 1 && __builtin_cpu_supports("avx512f")) {
    done = InterpolateNeighbours(pair.a0, pair.b0, f, g, count, out);
  }
  RowPair const rest{pair.a0 + done, pair.a1 + done, pair.b0 + done, pair.b1 + done};
  InterpolatePlainEvenRunRow(rest, f, g, count - done, out + done);
}

#else

void InterpolateEvenRunRow(RowPair pair, double f, double g, std::ptrdiff_t count, float* out) {
  InterpolatePlainEvenRunRow(pair, f, g, count, out);
}

#endif

ORB_ROW_KERNEL void InterpolateEvenRunRow(RowPair pair, double f, double g, std::ptrdiff_t count, double* out) {
  InterpolateEvenRun(pair, f, g, count, out);
}

}  // namespace orb
