#include <algorithm>

#include <orbimg/core/row_kernel.h>
#include <orbimg/restoration/plane_arithmetic_internal.h>

namespace orb {

namespace {

std::ptrdiff_t Place(int nx, int x, int y) { return static_cast<std::ptrdiff_t>(nx) * y + x; }

}  // namespace

void PlaceInPad(float const* from, float* pad, int nx, int ny, int w, int h, int x0, int y0) {
  std::fill_n(pad, Place(nx, 0, ny), 0.0f);
  for (int y = 0; y < h; ++y) std::copy_n(from + Place(w, 0, y), w, pad + Place(nx, x0 - 1, y + y0 - 1));
}

void TakeFromPad(float const* pad, float* to, int nx, int ny, int w, int h) {
  int const x0 = CentredPosition(nx, w);
  int const y0 = CentredPosition(ny, h);
  for (int y = 0; y < h; ++y) std::copy_n(pad + Place(nx, x0 - 1, y + y0 - 1), w, to + Place(w, 0, y));
}

Peak FindPeak(float const* plane, int nx, int ny) {
  Peak peak{plane[0], 0, 0};
  for (int y = 0; y < ny; ++y) {
    float const* const row = plane + Place(nx, 0, y);
    for (int x = 0; x < nx; ++x) {
      if (row[x] > peak.value) peak = {row[x], x, y};
    }
  }
  return peak;
}

void ShiftToOrigin(float const* from, float* to, int nx, int ny, int x, int y) {
  for (int row = 0; row < ny; ++row) {
    float const* const source = from + Place(nx, 0, (row + y) % ny);
    std::rotate_copy(source, source + x, source + nx, to + Place(nx, 0, row));
  }
}

ORB_ROW_KERNEL void ArrayDivide(float const* a, float const* b, float* out, std::ptrdiff_t n) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < n; ++i) out[i] = static_cast<float>(static_cast<double>(a[i]) / b[i]);
}

ORB_ROW_KERNEL void ArrayMultiply(float const* a, float const* b, float* out, std::ptrdiff_t n) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < n; ++i) out[i] = static_cast<float>(static_cast<double>(a[i]) * b[i]);
}

ORB_ROW_KERNEL void ArraySubtract(float const* a, float const* b, float* out, std::ptrdiff_t n) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < n; ++i) out[i] = static_cast<float>(static_cast<double>(a[i]) - b[i]);
}

ORB_ROW_KERNEL void ComplexDivideByReal(float const* a, double divisor, float* out, std::ptrdiff_t n) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < 2 * n; ++i) out[i] = static_cast<float>(a[i] / divisor);
}

ORB_ROW_KERNEL void ComplexMultiply(float const* a, float const* b, float* out, std::ptrdiff_t n) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    double const re = a[2 * i], im = a[2 * i + 1];
    double const bRe = b[2 * i], bIm = b[2 * i + 1];
    out[2 * i] = static_cast<float>(re * bRe - im * bIm);
    out[2 * i + 1] = static_cast<float>(re * bIm + im * bRe);
  }
}

ORB_ROW_KERNEL void ComplexConjMultiply(float const* a, float const* b, float* out, std::ptrdiff_t n) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    double const re = a[2 * i], im = a[2 * i + 1];
    double const bRe = b[2 * i], bIm = b[2 * i + 1];
    out[2 * i] = static_cast<float>(re * bRe + im * bIm);
    out[2 * i + 1] = static_cast<float>(re * bIm - im * bRe);
  }
}

}  // namespace orb
