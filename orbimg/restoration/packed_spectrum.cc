#include <orbimg/restoration/packed_spectrum.h>

#include <cstddef>

#include <orbimg/core/row_kernel.h>

namespace {

struct Shape {
  Shape(int log2x, int log2y)
      : columns(static_cast<std::ptrdiff_t>(1) << log2x),
        rows(static_cast<std::ptrdiff_t>(1) << log2y),
        halfColumns(columns / 2),
        halfRows(rows / 2) {}

  std::ptrdiff_t columns;
  std::ptrdiff_t rows;
  std::ptrdiff_t halfColumns;
  std::ptrdiff_t halfRows;
};

// The four rows that depend on one another: r, H + r and, from the other end, H - r, ny - r. At r = H/2 each pair is
// one row twice.
struct FourRows {
  float* low;       // r
  float* lowSine;   // H + r
  float* high;      // H - r
  float* highSine;  // ny - r
};

FourRows RowsOf(float* s, Shape const& shape, std::ptrdiff_t r) {
  return {s + r * shape.columns, s + (shape.halfRows + r) * shape.columns, s + (shape.halfRows - r) * shape.columns,
          s + (shape.rows - r) * shape.columns};
}

// cc cos-cos, sx sine along x, sy sine along y, ss sin-sin, of rows r (low) and H - r (high).
ORB_ROW_KERNEL void PackRows(FourRows const& row, std::ptrdiff_t h) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t c = 1; c < h; ++c) {
    float const cc = row.low[c];
    float const sx = row.low[h + c];
    float const sy = row.lowSine[c];
    float const ss = row.lowSine[h + c];
    float const highCc = row.high[c];
    float const highSx = row.high[h + c];
    float const highSy = row.highSine[c];
    float const highSs = row.highSine[h + c];
    row.low[c] = cc - ss;
    row.low[h + c] = sx + sy;
    row.highSine[c] = cc + ss;
    row.highSine[h + c] = sx - sy;
    row.high[c] = highCc - highSs;
    row.high[h + c] = highSx + highSy;
    row.lowSine[c] = highCc + highSs;
    row.lowSine[h + c] = highSx - highSy;
  }
}

ORB_ROW_KERNEL void UnpackRows(FourRows const& row, std::ptrdiff_t h) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t c = 1; c < h; ++c) {
    double const plusRe = row.low[c];  // frequency +r
    double const plusIm = row.low[h + c];
    double const minusRe = row.highSine[c];  // -r
    double const minusIm = row.highSine[h + c];
    double const highPlusRe = row.high[c];  // H - r
    double const highPlusIm = row.high[h + c];
    double const highMinusRe = row.lowSine[c];  // r - H
    double const highMinusIm = row.lowSine[h + c];
    row.low[c] = static_cast<float>(0.5 * (plusRe + minusRe));
    row.lowSine[h + c] = static_cast<float>(0.5 * (minusRe - plusRe));
    row.low[h + c] = static_cast<float>(0.5 * (plusIm + minusIm));
    row.lowSine[c] = static_cast<float>(0.5 * (plusIm - minusIm));
    row.high[c] = static_cast<float>(0.5 * (highPlusRe + highMinusRe));
    row.highSine[h + c] = static_cast<float>(0.5 * (highMinusRe - highPlusRe));
    row.high[h + c] = static_cast<float>(0.5 * (highPlusIm + highMinusIm));
    row.highSine[c] = static_cast<float>(0.5 * (highPlusIm - highMinusIm));
  }
}

// Pairs (re, im) of a row; `sign` is -1 for the product with the conjugate of b.
ORB_ROW_KERNEL void MultiplyPairsRow(float* out, float const* a, float const* b, std::ptrdiff_t h, double sign) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t c = 1; c < h; ++c) {
    double const re = a[c];
    double const im = a[h + c];
    double const bRe = b[c];
    double const bIm = b[h + c] * sign;
    out[c] = static_cast<float>(re * bRe - im * bIm);
    out[h + c] = static_cast<float>(re * bIm + im * bRe);
  }
}

// The pairs of a column and its two real terms.
void MultiplyColumn(float* out, float const* a, float const* b, Shape const& shape, double sign) {
  std::ptrdiff_t const step = shape.columns;
  std::ptrdiff_t const toImaginary = shape.halfRows * step;
  for (std::ptrdiff_t r = 1; r < shape.halfRows; ++r) {
    double const re = a[r * step];
    double const im = a[r * step + toImaginary];
    double const bRe = b[r * step];
    double const bIm = b[r * step + toImaginary] * sign;
    out[r * step] = static_cast<float>(re * bRe - im * bIm);
    out[r * step + toImaginary] = static_cast<float>(re * bIm + im * bRe);
  }
  out[0] = a[0] * b[0];
  if (shape.halfRows > 0) out[toImaginary] = a[toImaginary] * b[toImaginary];
}

}  // namespace

int SpectrumPack(float* s, int log2x, int log2y, int direction) {
  Shape const shape(log2x, log2y);
  for (std::ptrdiff_t r = 1; 2 * r < shape.halfRows; ++r) {
    FourRows const rows = RowsOf(s, shape, r);
    direction >= 0 ? PackRows(rows, shape.halfColumns) : UnpackRows(rows, shape.halfColumns);
  }
  if (shape.halfRows < 2) return 0;
  FourRows const middle = RowsOf(s, shape, shape.halfRows / 2);
  direction >= 0 ? PackRows(middle, shape.halfColumns) : UnpackRows(middle, shape.halfColumns);
  return 0;
}

void SpectrumMultiply(float* out, float const* a, float const* b, int log2x, int log2y, int direction) {
  Shape const shape(log2x, log2y);
  double const sign = direction < 0 ? -1.0 : 1.0;
  for (std::ptrdiff_t r = 0; r < shape.rows; ++r) {
    std::ptrdiff_t const row = r * shape.columns;
    MultiplyPairsRow(out + row, a + row, b + row, shape.halfColumns, sign);
  }
  MultiplyColumn(out, a, b, shape, sign);
  if (shape.halfColumns == 0) return;
  std::ptrdiff_t const h = shape.halfColumns;
  MultiplyColumn(out + h, a + h, b + h, shape, sign);
}
