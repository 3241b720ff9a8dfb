#include <tests/reference/real_transform_reference.h>

#include <cmath>
#include <complex>
#include <cstddef>

namespace orb::test::reference {

namespace {

constexpr double kTwoPi = 6.2831853071796;

struct Tables {
  explicit Tables(int n) : cosine(static_cast<std::size_t>(n)), sine(static_cast<std::size_t>(n)) {
    for (int j = 1; j <= (n / 2 - 1) / 2; ++j) {
      cosine[static_cast<std::size_t>(j)] = static_cast<float>(std::cos(kTwoPi * j / n));
      sine[static_cast<std::size_t>(j)] = static_cast<float>(std::sin(kTwoPi * j / n));
    }
  }
  std::vector<float> cosine;
  std::vector<float> sine;
};

template <typename Real>
void ForwardPass(float const* A, float* B, int n, int span, Tables const& tables) {
  int const h = n / 2;
  for (int j = 0; j < span; ++j) {
    B[j] = A[j] + A[j + span];
    B[h + j] = A[j] - A[j + span];
  }
  if (2 * span > h) return;
  int k = span;
  for (; k < h - k; k += span) {
    Real const c = tables.cosine[static_cast<std::size_t>(k)];
    Real const s = tables.sine[static_cast<std::size_t>(k)];
    for (int i = 0; i < span; ++i) {
      Real const re = A[2 * k + span + i];
      Real const im = A[h + 2 * k + span + i];
      Real const t = re * c - im * s;
      Real const u = re * s + im * c;
      B[k + i] = static_cast<float>(A[2 * k + i] + t);
      B[h - k + i] = static_cast<float>(A[2 * k + i] - t);
      B[h + k + i] = static_cast<float>(A[h + 2 * k + i] + u);
      B[n - k + i] = static_cast<float>(u - A[h + 2 * k + i]);
    }
  }
  for (int i = 0; i < span; ++i) {
    B[k + i] = A[h + i];
    B[h + k + i] = A[h + span + i];
  }
}

template <typename Real>
void InversePass(float const* A, float* B, int n, int span, Tables const& tables) {
  int const h = n / 2;
  for (int j = 0; j < span; ++j) {
    B[j] = A[j] + A[h + j];
    B[span + j] = A[j] - A[h + j];
  }
  if (2 * span > h) return;
  int k = span;
  for (; k < h - k; k += span) {
    Real const c = tables.cosine[static_cast<std::size_t>(k)];
    Real const s = tables.sine[static_cast<std::size_t>(k)];
    for (int i = 0; i < span; ++i) {
      Real const a = A[k + i];
      Real const b = A[h - k + i];
      Real const e = A[n - k + i];
      Real const f = A[h + k + i];
      B[2 * k + i] = static_cast<float>(a + b);
      B[h + 2 * k + i] = static_cast<float>(f - e);
      B[2 * k + span + i] = static_cast<float>((f + e) * s + (a - b) * c);
      B[h + 2 * k + span + i] = static_cast<float>((f + e) * c - (a - b) * s);
    }
  }
  if (k != h - k) return;
  for (int i = 0; i < span; ++i) {
    B[h + i] = 2.0f * A[k + i];
    B[h + span + i] = 2.0f * A[h + k + i];
  }
}

std::size_t At(int x, int y, int nx) {
  return static_cast<std::size_t>(y) * static_cast<std::size_t>(nx) + static_cast<std::size_t>(x);
}

template <typename Real>
void TransformRows(std::vector<float>& image, int nx, int ny, int direction) {
  for (int y = 0; y < ny; ++y) {
    std::vector<float> line;
    for (int x = 0; x < nx; ++x) line.push_back(image[At(x, y, nx)]);
    line = TransformLine<Real>(line, direction);
    for (int x = 0; x < nx; ++x) image[At(x, y, nx)] = line[static_cast<std::size_t>(x)];
  }
}

template <typename Real>
void TransformColumns(std::vector<float>& image, int nx, int ny, int direction) {
  for (int x = 0; x < nx; ++x) {
    std::vector<float> line;
    for (int y = 0; y < ny; ++y) line.push_back(image[At(x, y, nx)]);
    line = TransformLine<Real>(line, direction);
    for (int y = 0; y < ny; ++y) image[At(x, y, nx)] = line[static_cast<std::size_t>(y)];
  }
}

int Mod(int i, int n) { return ((i % n) + n) % n; }

}  // namespace

template <typename Real>
std::vector<float> TransformLine(std::vector<float> const& line, int direction) {
  int const n = static_cast<int>(line.size());
  Tables const tables(n);
  double const norm = std::sqrt(1.0 / n);
  std::vector<float> A(line.size());
  std::vector<float> B(line.size());
  for (std::size_t t = 0; t < line.size(); ++t) A[t] = static_cast<float>(line[t] * norm);
  if (direction > 0) {
    for (int span = n / 2; span >= 1; span /= 2) {
      ForwardPass<Real>(A.data(), B.data(), n, span, tables);
      A.swap(B);
    }
  } else {
    for (int span = 1; span <= n / 2; span *= 2) {
      InversePass<Real>(A.data(), B.data(), n, span, tables);
      A.swap(B);
    }
  }
  return A;
}

template <typename Real>
std::vector<float> Transform2(std::vector<float> const& from, int log2x, int log2y, int direction) {
  int const nx = 1 << log2x;
  int const ny = 1 << log2y;
  std::vector<float> image = from;
  if (direction > 0) {
    TransformRows<Real>(image, nx, ny, direction);
    TransformColumns<Real>(image, nx, ny, direction);
  } else {
    TransformColumns<Real>(image, nx, ny, direction);
    TransformRows<Real>(image, nx, ny, direction);
  }
  return image;
}

template std::vector<float> TransformLine<float>(std::vector<float> const&, int);
template std::vector<float> TransformLine<double>(std::vector<float> const&, int);
template std::vector<float> Transform2<float>(std::vector<float> const&, int, int, int);
template std::vector<float> Transform2<double>(std::vector<float> const&, int, int, int);

std::vector<float> PackSpectrum(std::vector<float> const& T, int log2x, int log2y, int direction) {
  int const nx = 1 << log2x;
  int const ny = 1 << log2y;
  int const h = nx / 2;
  int const H = ny / 2;
  std::vector<float> S = T;
  auto const t = [&](int r, int c) { return static_cast<double>(T[At(c, r, nx)]); };
  auto const set = [&](int r, int c, double v) { S[At(c, r, nx)] = static_cast<float>(v); };
  for (int r = 1; r < H; ++r) {
    for (int c = 1; c < h; ++c) {
      if (direction >= 0) {
        set(r, c, t(r, c) - t(H + r, h + c));
        set(r, h + c, t(r, h + c) + t(H + r, c));
        set(ny - r, c, t(r, c) + t(H + r, h + c));
        set(ny - r, h + c, t(r, h + c) - t(H + r, c));
      } else {
        set(r, c, 0.5 * (t(r, c) + t(ny - r, c)));
        set(H + r, h + c, 0.5 * (t(ny - r, c) - t(r, c)));
        set(r, h + c, 0.5 * (t(r, h + c) + t(ny - r, h + c)));
        set(H + r, c, 0.5 * (t(r, h + c) - t(ny - r, h + c)));
      }
    }
  }
  return S;
}

std::vector<float> MultiplySpectra(std::vector<float> const& a, std::vector<float> const& b, int log2x, int log2y,
                                   int direction) {
  int const nx = 1 << log2x;
  int const ny = 1 << log2y;
  int const h = nx / 2;
  int const H = ny / 2;
  std::vector<float> out = a;
  auto const real = [&](std::size_t i) { out[i] = static_cast<float>(static_cast<double>(a[i]) * b[i]); };
  auto const pair = [&](std::size_t re, std::size_t im) {
    double const bIm = direction < 0 ? -static_cast<double>(b[im]) : static_cast<double>(b[im]);
    double const aRe = a[re];
    double const aIm = a[im];
    out[re] = static_cast<float>(aRe * b[re] - aIm * bIm);
    out[im] = static_cast<float>(aRe * bIm + aIm * b[re]);
  };
  for (int r : {0, H}) {
    for (int c : {0, h}) real(At(c, r, nx));
  }
  for (int r = 0; r < ny; ++r) {
    for (int c = 1; c < h; ++c) pair(At(c, r, nx), At(h + c, r, nx));
  }
  for (int c : {0, h}) {
    for (int r = 1; r < H; ++r) pair(At(c, r, nx), At(c, H + r, nx));
  }
  return out;
}

std::vector<float> WrapKernel(std::vector<float> const& kernel, int halfX, int halfY, int nx, int ny) {
  std::vector<float> target(static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny));
  for (int v = -halfY; v <= halfY; ++v) {
    for (int u = -halfX; u <= halfX; ++u) {
      target[At(Mod(u, nx), Mod(v, ny), nx)] = kernel[At(halfX + u, halfY + v, 2 * halfX + 1)];
    }
  }
  return target;
}

std::vector<double> LineSpectrum(std::vector<double> const& line) {
  double const pi = std::acos(-1.0);
  std::size_t const n = line.size();
  std::size_t const h = n / 2;
  std::vector<double> y(n);
  for (std::size_t k = 0; k <= h && k < n; ++k) {
    double re = 0.0;
    double im = 0.0;
    for (std::size_t t = 0; t < n; ++t) {
      double const angle = 2.0 * pi * static_cast<double>(k * t % n) / static_cast<double>(n);
      re += line[t] * std::cos(angle);
      im += line[t] * std::sin(angle);
    }
    y[k] = re / std::sqrt(static_cast<double>(n));
    if (k > 0 && k < h) y[h + k] = im / std::sqrt(static_cast<double>(n));
  }
  return y;
}

std::vector<double> ConvolveByDefinition(std::vector<float> const& in, std::vector<float> const& kernel, int halfX,
                                         int halfY, int nx, int ny, int direction) {
  std::vector<double> out;
  for (int y = 0; y < ny; ++y) {
    for (int x = 0; x < nx; ++x) {
      double sum = 0.0;
      for (int v = -halfY; v <= halfY; ++v) {
        for (int u = -halfX; u <= halfX; ++u) {
          sum += static_cast<double>(kernel[At(halfX + u, halfY + v, 2 * halfX + 1)]) *
                 in[At(Mod(x - direction * u, nx), Mod(y - direction * v, ny), nx)];
        }
      }
      out.push_back(sum);
    }
  }
  return out;
}

}  // namespace orb::test::reference
