#include <orbimg/restoration/fft2_kernels.h>

#include <algorithm>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

// Rows of a wide spectrum lie in different pages, which no processor fetches ahead by itself.
constexpr std::ptrdiff_t kRowsAhead = 24;

template <int isWrite>
void Fetch(float const* values, std::ptrdiff_t count) {
  for (std::ptrdiff_t i = 0; i < 2 * count; i += kColumnsPerCacheLine) __builtin_prefetch(values + i, isWrite);
}

// The block's part of a later row.
template <int isWrite>
void FetchAhead(ColumnBlock const& block, std::ptrdiff_t y) {
  Fetch<isWrite>(block.Row(std::min(y + kRowsAhead, block.ny - 1)) + 2 * block.left, block.count);
}

// The part of a later row's mirror that mirrors the block.
template <int isWrite>
void FetchMirrorAhead(ColumnBlock const& block, std::ptrdiff_t y) {
  std::ptrdiff_t const row = block.MirrorRow(std::min(y + kRowsAhead, block.ny - 1));
  Fetch<isWrite>(block.Row(row) + 2 * block.MirrorColumn(block.left + block.count - 1), block.count);
}

float Half(double v) { return static_cast<float>(v * 0.5); }

}  // namespace

ORB_ROW_KERNEL void JoinRealRows(float const* a, float const* b, std::ptrdiff_t n, float* line) {
  if (b == nullptr) {
    for (std::ptrdiff_t x = 0; x < n; ++x) {
      line[2 * x] = a[x];
      line[2 * x + 1] = 0.0f;
    }
    return;
  }
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < n; ++x) {
    line[2 * x] = a[x];
    line[2 * x + 1] = b[x];
  }
}

void PartSpectra(float const* line, std::ptrdiff_t n, float* a, float* b) {
  for (std::ptrdiff_t k = 0; k <= n / 2; ++k) {
    float const* const z = line + 2 * k;
    float const* const m = line + 2 * (k == 0 ? 0 : n - k);
    double const re = z[0];
    double const im = z[1];
    a[2 * k] = Half(re + m[0]);
    a[2 * k + 1] = Half(im - m[1]);
    if (b == nullptr) continue;
    b[2 * k] = Half(im + m[1]);
    b[2 * k + 1] = Half(m[0] - re);
  }
}

// The zero and the middle frequency of a real line are real: what rounding left beside that is dropped.
void JoinSpectra(float const* a, float const* b, std::ptrdiff_t n, float* line) {
  constexpr float kNone[2] = {0.0f, 0.0f};
  auto const joinReal = [&](std::ptrdiff_t k) {
    line[2 * k] = a[2 * k];
    line[2 * k + 1] = b != nullptr ? b[2 * k] : 0.0f;
  };
  joinReal(0);
  for (std::ptrdiff_t k = 1; k < (n + 1) / 2; ++k) {
    float const* const p = a + 2 * k;
    float const* const q = b != nullptr ? b + 2 * k : kNone;
    line[2 * k] = p[0] - q[1];
    line[2 * k + 1] = p[1] + q[0];
    line[2 * (n - k)] = p[0] + q[1];
    line[2 * (n - k) + 1] = q[0] - p[1];
  }
  if (n % 2 == 0) joinReal(n / 2);
}

ORB_ROW_KERNEL void PartRealRows(float const* line, std::ptrdiff_t n, float* a, float* b) {
  for (std::ptrdiff_t x = 0; x < n; ++x) a[x] = line[2 * x];
  if (b == nullptr) return;
  for (std::ptrdiff_t x = 0; x < n; ++x) b[x] = line[2 * x + 1];
}

void GatherColumns(ColumnBlock const& block) {
  for (std::ptrdiff_t y = 0; y < block.ny; ++y) {
    FetchAhead<0>(block, y);
    float const* const row = block.Row(y) + 2 * block.left;
    float* const lines = block.lines + 2 * y;
    for (std::ptrdiff_t c = 0; c < block.count; ++c) {
      lines[c * block.lineStride] = row[2 * c];
      lines[c * block.lineStride + 1] = row[2 * c + 1];
    }
  }
}

void GatherSymmetricColumns(ColumnBlock const& block) {
  for (std::ptrdiff_t y = 0; y < block.ny; ++y) {
    FetchAhead<0>(block, y);
    FetchMirrorAhead<0>(block, y);
    float const* const row = block.Row(y);
    float const* const mirrorRow = block.Row(block.MirrorRow(y));
    float* const lines = block.lines + 2 * y;
    for (std::ptrdiff_t c = 0; c < block.count; ++c) {
      float const* const z = row + 2 * (block.left + c);
      float const* const m = mirrorRow + 2 * block.MirrorColumn(block.left + c);
      lines[c * block.lineStride] = Half(static_cast<double>(z[0]) + m[0]);
      lines[c * block.lineStride + 1] = Half(static_cast<double>(z[1]) - m[1]);
    }
  }
}

void ScatterColumns(ColumnBlock const& block) {
  for (std::ptrdiff_t y = 0; y < block.ny; ++y) {
    FetchAhead<1>(block, y);
    float* const row = block.Row(y) + 2 * block.left;
    float const* const lines = block.lines + 2 * y;
    for (std::ptrdiff_t c = 0; c < block.count; ++c) {
      row[2 * c] = lines[c * block.lineStride];
      row[2 * c + 1] = lines[c * block.lineStride + 1];
    }
  }
}

void ScatterWithMirrors(ColumnBlock const& block) {
  for (std::ptrdiff_t y = 0; y < block.ny; ++y) {
    FetchAhead<1>(block, y);
    FetchMirrorAhead<1>(block, y);
    float* const row = block.Row(y);
    float* const mirrorRow = block.Row(block.MirrorRow(y));
    float const* const lines = block.lines + 2 * y;
    for (std::ptrdiff_t c = 0; c < block.count; ++c) {
      std::ptrdiff_t const x = block.left + c;
      float const re = lines[c * block.lineStride];
      float const im = lines[c * block.lineStride + 1];
      row[2 * x] = re;
      row[2 * x + 1] = im;
      std::ptrdiff_t const m = block.MirrorColumn(x);
      if (m == x) continue;  // the zero and the middle column hold their own mirrors
      mirrorRow[2 * m] = re;
      mirrorRow[2 * m + 1] = -im;
    }
  }
}

ORB_ROW_KERNEL void DivideLine(float* line, std::ptrdiff_t n, double divisor) {
  for (std::ptrdiff_t i = 0; i < 2 * n; ++i) line[i] = static_cast<float>(line[i] / divisor);
}

}  // namespace orb
