#include <tests/reference/fourier_reference.h>

#include <cmath>
#include <cstddef>

namespace orb::test::reference {

namespace {

std::size_t Size(int n) { return static_cast<std::size_t>(n); }

// The quadrant's cosine and its mirrors, one after the other.
void SetQuadrants(std::vector<FloatComplex>& w, int n, int k, float c) {
  w[Size(k)].re = c;
  w[Size(n / 4 - k)].im = -c;
  w[Size(n / 2 - k)].re = -c;
  w[Size(n / 4 + k)].im = -c;
  w[Size(n / 2 + k)].re = -c;
  w[Size(3 * n / 4 - k)].im = c;
  if (k > 0) w[Size(n - k)].re = c;
  if (k < n / 4) w[Size(3 * n / 4 + k)].im = c;
}

std::vector<FloatComplex> SplitEvenOdd(std::vector<FloatComplex> const& x, int parts) {
  int const n = static_cast<int>(x.size());
  int const len = n / parts;
  std::vector<FloatComplex> y(x.size());
  for (int i = 0; i < parts; ++i) {
    for (int j = 0; j < len; ++j) y[Size(i * len + j)] = x[Size((i % 2) + (i / 2) * 2 * len + 2 * j)];
  }
  return y;
}

std::vector<FloatComplex> Butterflies(std::vector<FloatComplex> const& x, std::vector<FloatComplex> const& table, int s,
                                      bool inverse) {
  int const n = static_cast<int>(x.size());
  std::vector<FloatComplex> y(x.size());
  for (int b = 0; b < n; b += 2 * s) {
    for (int i = 0; i < s; ++i) {
      FloatComplex const entry = table[Size(n / (2 * s) * i % n)];
      std::complex<double> const w(entry.re, inverse ? -entry.im : entry.im);
      std::complex<double> const a(x[Size(b + i)].re, x[Size(b + i)].im);
      std::complex<double> const v(x[Size(b + s + i)].re, x[Size(b + s + i)].im);
      std::complex<double> const t(w.real() * v.real() - w.imag() * v.imag(),
                                   w.real() * v.imag() + w.imag() * v.real());
      y[Size(b + i)] = {static_cast<float>((a + t).real()), static_cast<float>((a + t).imag())};
      y[Size(b + s + i)] = {static_cast<float>((a - t).real()), static_cast<float>((a - t).imag())};
    }
  }
  return y;
}

}  // namespace

ComplexLine DefinedTransform(ComplexLine const& x, int sign) {
  std::size_t const n = x.size();
  ComplexLine root(n);
  for (std::size_t k = 0; k < n; ++k) {
    double const angle = sign * 2.0 * M_PI * static_cast<double>(k) / static_cast<double>(n);
    root[k] = {std::cos(angle), std::sin(angle)};
  }
  ComplexLine y(n);
  for (std::size_t k = 0; k < n; ++k) {
    for (std::size_t j = 0; j < n; ++j) y[k] += x[j] * root[j * k % n];
  }
  return y;
}

ComplexLine DefinedTransform2(ComplexLine const& plane, int nx, int ny, int sign) {
  ComplexLine result(plane);
  for (int y = 0; y < ny; ++y) {
    ComplexLine const row(result.begin() + y * nx, result.begin() + (y + 1) * nx);
    ComplexLine const turned = DefinedTransform(row, sign);
    for (int x = 0; x < nx; ++x) result[Size(y * nx + x)] = turned[Size(x)];
  }
  for (int x = 0; x < nx; ++x) {
    ComplexLine column;
    for (int y = 0; y < ny; ++y) column.push_back(result[Size(y * nx + x)]);
    ComplexLine const turned = DefinedTransform(column, sign);
    for (int y = 0; y < ny; ++y) result[Size(y * nx + x)] = turned[Size(y)];
  }
  return result;
}

std::vector<FloatComplex> Twiddles(int n) {
  std::vector<FloatComplex> w(Size(n));
  double const step = static_cast<float>(6.283185307179586 / n);
  for (int k = 0; k <= n / 4; ++k) SetQuadrants(w, n, k, static_cast<float>(std::cos(k * step)));
  return w;
}

std::vector<FloatComplex> RadixTwoLine(std::vector<FloatComplex> line, bool inverse) {
  int const n = static_cast<int>(line.size());
  std::vector<FloatComplex> const table = Twiddles(n);
  for (int parts = 2; parts <= n; parts *= 2) line = SplitEvenOdd(line, parts);
  for (int s = 1; s < n; s *= 2) line = Butterflies(line, table, s, inverse);
  float const root = static_cast<float>(std::sqrt(n));
  for (FloatComplex& v : line) {
    v = {static_cast<float>(v.re / static_cast<double>(root)), static_cast<float>(v.im / static_cast<double>(root))};
  }
  return line;
}

std::vector<float> RadixTwoPlane(std::vector<float> data, int width, int height, bool inverse) {
  auto const transform = [&](int count, int length, int step, int next) {
    for (int line = 0; line < count; ++line) {
      std::vector<FloatComplex> values;
      for (int t = 0; t < length; ++t) {
        std::size_t const at = 2 * Size(line * next + t * step);
        values.push_back({data[at], data[at + 1]});
      }
      values = RadixTwoLine(values, inverse);
      for (int t = 0; t < length; ++t) {
        std::size_t const at = 2 * Size(line * next + t * step);
        data[at] = values[Size(t)].re;
        data[at + 1] = values[Size(t)].im;
      }
    }
  };
  transform(height, width, 1, width);
  transform(width, height, width, 1);
  return data;
}

}  // namespace orb::test::reference
