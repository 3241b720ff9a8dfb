#include <orbimg/filters/wide_kernels.h>

#include <algorithm>

#if defined(__x86_64__) && !defined(ORB_NO_CLONES)
#define ORB_HAS_FOUR_ROWS 1
// GCC 12 warns of what its own header leaves undefined on purpose.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <immintrin.h>
#pragma GCC diagnostic pop
#endif

namespace orb {

#if defined(ORB_HAS_FOUR_ROWS)

namespace {

constexpr int kLanes = 8;
constexpr int kVectors = 4;

#define ORB_512 __attribute__((target("avx512f")))
#define ORB_512_INLINE __attribute__((target("avx512f"), always_inline)) inline

struct Sums {
  __m512d of[kRowsAtOnce][kVectors];
};

// A fused operation rounds like a product and a sum, as the product is exact.
template <int kFirst, int kLast>
ORB_512_INLINE void AddList(std::span<FourRowTap const> taps, std::ptrdiff_t x, Sums& sums) {
  Sums own = sums;  // in registers while the list lasts
  for (FourRowTap const& tap : taps) {
    __m512d samples[kVectors];
    for (int i = 0; i < kVectors; ++i) samples[i] = _mm512_cvtps_pd(_mm256_loadu_ps(tap.samples + x + i * kLanes));
    for (int j = kFirst; j <= kLast; ++j) {
      __m512d const weight = _mm512_set1_pd(tap.weights[j]);
      for (int i = 0; i < kVectors; ++i) own.of[j][i] = _mm512_fmadd_pd(weight, samples[i], own.of[j][i]);
    }
  }
  sums = own;
}

ORB_512_INLINE void AddLists(std::span<FourRowTaps const> lists, std::ptrdiff_t x, Sums& sums) {
  for (FourRowTaps const& list : lists) {
    switch (list.first * kRowsAtOnce + list.last) {
      case 0:
        AddList<0, 0>(list.taps, x, sums);
        break;
      case 1:
        AddList<0, 1>(list.taps, x, sums);
        break;
      case 2:
        AddList<0, 2>(list.taps, x, sums);
        break;
      case 3:
        AddList<0, 3>(list.taps, x, sums);
        break;
      case 5:
        AddList<1, 1>(list.taps, x, sums);
        break;
      case 6:
        AddList<1, 2>(list.taps, x, sums);
        break;
      case 7:
        AddList<1, 3>(list.taps, x, sums);
        break;
      case 10:
        AddList<2, 2>(list.taps, x, sums);
        break;
      case 11:
        AddList<2, 3>(list.taps, x, sums);
        break;
      default:
        AddList<3, 3>(list.taps, x, sums);
        break;
    }
  }
}

ORB_512_INLINE void StoreLanes(__m512d sum, double* out) { _mm512_storeu_pd(out, sum); }
ORB_512_INLINE void StoreLanes(__m512d sum, float* out) { _mm256_storeu_ps(out, _mm512_cvtpd_ps(sum)); }

// The last block is moved back to end with the row; some columns are then summed twice, to the same values.
template <typename Out>
ORB_512_INLINE void SumColumns(std::span<FourRowTaps const> lists, std::ptrdiff_t first, std::ptrdiff_t count,
                               Out* const* out) {
  for (std::ptrdiff_t begin = 0; begin < count; begin += kLeastColumns) {
    std::ptrdiff_t const x = std::min(begin, count - kLeastColumns);
    Sums sums;
    for (auto& row : sums.of) {
      for (__m512d& sum : row) sum = _mm512_setzero_pd();
    }
    AddLists(lists, first + x, sums);
    for (int j = 0; j < kRowsAtOnce; ++j) {
      for (int i = 0; i < kVectors; ++i) StoreLanes(sums.of[j][i], out[j] + x + i * kLanes);
    }
  }
}

ORB_512 void SumWide(std::span<FourRowTaps const> lists, std::ptrdiff_t first, std::ptrdiff_t count,
                     double* const* out) {
  SumColumns(lists, first, count, out);
}

ORB_512 void SumWide(std::span<FourRowTaps const> lists, std::ptrdiff_t first, std::ptrdiff_t count,
                     float* const* out) {
  SumColumns(lists, first, count, out);
}

ORB_512 void FoldColumns(double const* sums, double const* factors, int radius, std::ptrdiff_t count, float* out) {
  for (std::ptrdiff_t begin = 0; begin < count; begin += kLeastColumns) {
    std::ptrdiff_t const x = std::min(begin, count - kLeastColumns);
    __m512d totals[kVectors];
    for (int k = 0; k < kVectors; ++k) {
      totals[k] = _mm512_mul_pd(_mm512_set1_pd(factors[0]), _mm512_loadu_pd(sums + x + k * kLanes));
    }
    for (int i = 1; i <= radius; ++i) {
      __m512d const factor = _mm512_set1_pd(factors[i]);
      for (int k = 0; k < kVectors; ++k) {
        double const* const at = sums + x + k * kLanes;
        __m512d const pair = _mm512_add_pd(_mm512_loadu_pd(at - i), _mm512_loadu_pd(at + i));
        totals[k] = _mm512_add_pd(totals[k], _mm512_mul_pd(factor, pair));
      }
    }
    for (int k = 0; k < kVectors; ++k) StoreLanes(totals[k], out + x + k * kLanes);
  }
}

}  // namespace

bool HasWideVectors() {
  static bool const can = __builtin_cpu_supports("avx512f") != 0;
  return can;
}

void SumFourRows(std::span<FourRowTaps const> lists, std::ptrdiff_t first, std::ptrdiff_t count, double* const* out) {
  SumWide(lists, first, count, out);
}

void SumFourRows(std::span<FourRowTaps const> lists, std::ptrdiff_t first, std::ptrdiff_t count, float* const* out) {
  SumWide(lists, first, count, out);
}

void FoldWideRow(double const* sums, double const* factors, int radius, std::ptrdiff_t count, float* out) {
  FoldColumns(sums, factors, radius, count, out);
}

#else

bool HasWideVectors() { return false; }
void SumFourRows(std::span<FourRowTaps const>, std::ptrdiff_t, std::ptrdiff_t, double* const*) {}
void SumFourRows(std::span<FourRowTaps const>, std::ptrdiff_t, std::ptrdiff_t, float* const*) {}
void FoldWideRow(double const*, double const*, int, std::ptrdiff_t, float*) {}

#endif

}  // namespace orb
