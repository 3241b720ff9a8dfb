#include <orbimg/geometry/move_kernels.h>

#include <algorithm>
#include <cstring>

#include <orbimg/core/row_kernel.h>

namespace {

// Samples of a cache line: whole lines are read, and whole lines written, before others come that fall into the same
// place of the cache, as those of neighbouring rows do where a row has a power of two samples.
constexpr std::ptrdiff_t kTile = 16;
constexpr std::ptrdiff_t kLanes = 4;

using Lanes = float __attribute__((vector_size(kLanes * sizeof(float))));

inline Lanes Load(float const* p) {
  Lanes v;
  std::memcpy(&v, p, sizeof(v));
  return v;
}

inline void Store(float* p, Lanes v) { std::memcpy(p, &v, sizeof(v)); }

// Four samples of four rows each, in registers.
inline void TransposeBlock(float const* src, std::ptrdiff_t srcStep, float* dst, std::ptrdiff_t dstStep) {
  Lanes const a = Load(src);
  Lanes const b = Load(src + srcStep);
  Lanes const c = Load(src + 2 * srcStep);
  Lanes const d = Load(src + 3 * srcStep);
  Lanes const abLeft = __builtin_shufflevector(a, b, 0, 4, 1, 5);
  Lanes const cdLeft = __builtin_shufflevector(c, d, 0, 4, 1, 5);
  Lanes const abRight = __builtin_shufflevector(a, b, 2, 6, 3, 7);
  Lanes const cdRight = __builtin_shufflevector(c, d, 2, 6, 3, 7);
  Store(dst, __builtin_shufflevector(abLeft, cdLeft, 0, 1, 4, 5));
  Store(dst + dstStep, __builtin_shufflevector(abLeft, cdLeft, 2, 3, 6, 7));
  Store(dst + 2 * dstStep, __builtin_shufflevector(abRight, cdRight, 0, 1, 4, 5));
  Store(dst + 3 * dstStep, __builtin_shufflevector(abRight, cdRight, 2, 3, 6, 7));
}

inline void TransposeTile(float const* src, std::ptrdiff_t srcStep, float* dst, std::ptrdiff_t dstStep) {
  for (std::ptrdiff_t j = 0; j < kTile; j += kLanes) {
    for (std::ptrdiff_t i = 0; i < kTile; i += kLanes) {
      TransposeBlock(src + i * srcStep + j, srcStep, dst + j * dstStep + i, dstStep);
    }
  }
}

// Asks for the next tile of these rows. Into the second level of the cache: its sixteen lines would take all there is
// for them in the first. What lies beyond the image does no harm.
inline void AskAhead(float const* src, std::ptrdiff_t srcStep, float const* dst, std::ptrdiff_t dstStep) {
  for (std::ptrdiff_t k = 0; k < kTile; ++k) {
    __builtin_prefetch(src + k * srcStep, 0, 2);
    __builtin_prefetch(dst + k * dstStep, 1, 2);
  }
}

void TransposeRest(orb::ConstRows src, orb::Rows dst, std::ptrdiff_t firstColumn, std::ptrdiff_t columns,
                   std::ptrdiff_t firstRow, std::ptrdiff_t rows) {
  for (std::ptrdiff_t j = firstRow; j < rows; ++j) {
    for (std::ptrdiff_t i = firstColumn; i < columns; ++i) {
      dst.first[j * dst.step + i] = src.first[i * src.step + j];
    }
  }
}

}  // namespace

namespace orb {

ORB_ROW_KERNEL void ReverseRow(float const* src, float* dst, std::ptrdiff_t count) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) dst[i] = src[count - 1 - i];
}

void TransposeRows(ConstRows src, Rows dst, std::ptrdiff_t dstColumns, std::ptrdiff_t dstRows) {
  std::ptrdiff_t const tiledColumns = dstColumns / kTile * kTile;
  std::ptrdiff_t const tiledRows = dstRows / kTile * kTile;
  for (std::ptrdiff_t i = 0; i < tiledColumns; i += kTile) {
    for (std::ptrdiff_t j = 0; j < tiledRows; j += kTile) {
      AskAhead(src.first + (i + kTile) * src.step + j, src.step, dst.first + j * dst.step + i + kTile, dst.step);
      TransposeTile(src.first + i * src.step + j, src.step, dst.first + j * dst.step + i, dst.step);
    }
  }
  TransposeRest(src, dst, tiledColumns, dstColumns, 0, tiledRows);
  TransposeRest(src, dst, 0, dstColumns, tiledRows, dstRows);
}

}  // namespace orb
