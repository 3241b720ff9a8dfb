#include <orbimg/restoration/half_plane_kernels.h>

#include <algorithm>

#include <orbimg/core/row_kernel.h>
#include <orbimg/restoration/reversed_index_internal.h>

namespace orb {

namespace {

constexpr std::ptrdiff_t kLanes = kFourierLanes;
constexpr std::ptrdiff_t kTile = 8;  // values: rows are read and written a cache line of pairs at a time

// The places of the next values in the order of the butterflies.
template <typename Float>
void NextPlaces(Float* block, ReversedIndex& reversed, Float* (&places)[kTile]) {
  for (Float*& place : places) {
    place = block + reversed.Value() * kFourierValue;
    reversed.Next();
  }
}

}  // namespace

void LoadRowPairs(FourierLines const& lines, float const* rows, std::ptrdiff_t stride) {
  ReversedIndex reversed(lines.length);
  for (std::ptrdiff_t left = 0; left < lines.length; left += kTile) {
    float* places[kTile];
    NextPlaces(lines.block, reversed, places);
    for (std::ptrdiff_t part = 0; part < kFourierValue; ++part) {
      float const* const row = rows + part * stride + left;
      for (std::ptrdiff_t t = 0; t < kTile; ++t) places[t][part] = row[t];
    }
  }
}

void StoreRowPairs(FourierLines const& lines, float* rows, std::ptrdiff_t stride) {
  for (std::ptrdiff_t left = 0; left < lines.length; left += kTile) {
    float const* const values = lines.block + left * kFourierValue;
    for (std::ptrdiff_t part = 0; part < kFourierValue; ++part) {
      float* const row = rows + part * stride + left;
      for (std::ptrdiff_t t = 0; t < kTile; ++t) row[t] = values[t * kFourierValue + part];
    }
  }
}

// Sums of floats, rounded to floats and halved: the bits of arithmetic in double.
ORB_ROW_KERNEL void SplitSpectra(FourierLines const& lines) {
  std::ptrdiff_t const n = lines.length;
  float* const zero = lines.block;
  float* const middle = lines.block + n / 2 * kFourierValue;
  float* const end = lines.block + n * kFourierValue;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) {
    end[lane] = zero[kLanes + lane];
    end[kLanes + lane] = middle[kLanes + lane];
    zero[kLanes + lane] = middle[lane];
  }
  for (std::ptrdiff_t k = 1; k < n / 2; ++k) {
    float* const z = lines.block + k * kFourierValue;
    float* const m = lines.block + (n - k) * kFourierValue;
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) {
      float const re = z[lane];
      float const im = z[kLanes + lane];
      float const mirrorRe = m[lane];
      float const mirrorIm = m[kLanes + lane];
      z[lane] = (re + mirrorRe) * 0.5f;
      z[kLanes + lane] = (im - mirrorIm) * 0.5f;
      m[lane] = (im + mirrorIm) * 0.5f;
      m[kLanes + lane] = (mirrorRe - re) * 0.5f;
    }
  }
}

ORB_ROW_KERNEL void JoinSpectra(FourierLines const& lines, float const* halves) {
  std::ptrdiff_t const n = lines.length;
  float const* const a = halves;
  float const* const b = halves + n / 2 * kFourierValue;
  ReversedIndex reversed(n);
  float* const zero = lines.block;
  float* const middle = lines.block + kFourierValue;  // n/2 in reverse
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) {
    zero[lane] = a[lane];
    zero[kLanes + lane] = b[lane];
    middle[lane] = a[kLanes + lane];
    middle[kLanes + lane] = b[kLanes + lane];
  }
  for (std::ptrdiff_t k = 1; k < n / 2; ++k) {
    reversed.Next();
    float const* const p = a + k * kFourierValue;
    float const* const q = b + k * kFourierValue;
    float* const z = lines.block + reversed.Value() * kFourierValue;
    // n - k in reverse: of the digits above the lowest of k that is 1, each is the other one.
    std::ptrdiff_t const shared = n / 2 / (k & -k);
    float* const m = lines.block + (reversed.Value() ^ (shared - 1)) * kFourierValue;
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) {
      float const re = p[lane];
      float const im = p[kLanes + lane];
      float const otherRe = q[lane];
      float const otherIm = q[kLanes + lane];
      z[lane] = re - otherIm;
      z[kLanes + lane] = im + otherRe;
      m[lane] = re + otherIm;
      m[kLanes + lane] = otherRe - im;
    }
  }
}

void StoreHalves(float const* values, std::ptrdiff_t step, std::ptrdiff_t count, float* rows, std::ptrdiff_t stride) {
  for (std::ptrdiff_t left = 0; left < count; left += kTile) {
    float const* const tile = values + left * step;
    for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) {
      float* const to = rows + lane * stride + 2 * left;
      for (std::ptrdiff_t t = 0; t < kTile; ++t) {
        to[2 * t] = tile[t * step + lane];
        to[2 * t + 1] = tile[t * step + kLanes + lane];
      }
    }
  }
}

void LoadHalves(float const* rows, std::ptrdiff_t stride, std::ptrdiff_t count, float* values) {
  for (std::ptrdiff_t left = 0; left < count; left += kTile) {
    float* const tile = values + left * kFourierValue;
    for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) {
      float const* const from = rows + lane * stride + 2 * left;
      for (std::ptrdiff_t t = 0; t < kTile; ++t) {
        tile[t * kFourierValue + lane] = from[2 * t];
        tile[t * kFourierValue + kLanes + lane] = from[2 * t + 1];
      }
    }
  }
}

ORB_ROW_KERNEL void MultiplyLines(FourierLines const& lines, float const* factors, std::ptrdiff_t stride, float* to) {
  ReversedIndex reversed(lines.length);
  for (std::ptrdiff_t v = 0; v < lines.length; ++v) {
    float const* __restrict const factor = factors + v * stride;
    float const* __restrict const from = lines.block + v * kFourierValue;
    float* __restrict const out = to + reversed.Value() * kFourierValue;
    for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) out[lane] = from[lane] * factor[lane];
    for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) out[kLanes + lane] = from[kLanes + lane] * factor[lane];
    reversed.Next();
  }
}

void StoreRealParts(FourierLines const& lines, float* to, std::ptrdiff_t stride) {
  for (std::ptrdiff_t v = 0; v < lines.length; ++v) {
    std::copy_n(lines.block + v * kFourierValue, kLanes, to + v * stride);
  }
}

ORB_ROW_KERNEL float LargestSquare(float const* values, std::ptrdiff_t count) {
  float most[kLanes] = {};
  std::ptrdiff_t i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    for (std::ptrdiff_t k = 0; k < kLanes; ++k) {
      float const square = values[i + k] * values[i + k];
      most[k] = square > most[k] ? square : most[k];
    }
  }
  for (; i < count; ++i) most[0] = std::max(most[0], values[i] * values[i]);
  return *std::max_element(most, most + kLanes);
}

ORB_ROW_KERNEL void InvertRow(float* values, std::ptrdiff_t count, double k) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const v = values[i];
    values[i] = static_cast<float>(v / (v * v + k));
  }
}

}  // namespace orb
