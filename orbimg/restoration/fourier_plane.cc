#include <orbimg/restoration/fourier_plane.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <exception>

#include <orbimg/restoration/fourier_kernels.h>
#include <orbimg/restoration/plane_memory_internal.h>

namespace {

constexpr int kMostSide = 1 << 30;

int CeilLog2(int size) {
  int log2 = 0;
  while ((1 << log2) < size) ++log2;
  return log2;
}

// Part i of the arrangement after a pass takes the even (i even) or odd values of part i / 2 of the one before.
void Reorder(float const* from, float* to, int n, int pass) {
  int const parts = 1 << pass;
  int const length = n >> pass;
  for (int i = 0; i < parts; ++i) {
    std::ptrdiff_t const first = i % 2 + static_cast<std::ptrdiff_t>(i / 2) * 2 * length;
    for (int j = 0; j < length; ++j) {
      std::copy_n(from + 2 * (first + 2 * static_cast<std::ptrdiff_t>(j)), 2, to);
      to += 2;
    }
  }
}

// Every bit 0: the transform of such values is the same again, no -0.0 among them.
bool AreZero(float const* values, std::ptrdiff_t count) {
  return std::all_of(values, values + count, [](float v) { return std::bit_cast<std::uint32_t>(v) == 0; });
}

}  // namespace

CFourierPlane::~CFourierPlane() = default;

int CFourierPlane::Create(int w, int h) {
  data = std::vector<float>();
  if (w < 1 || h < 1 || w > kMostSide || h > kMostSide) return 0;
  log2Width = CeilLog2(w);
  log2Height = CeilLog2(h);
  width = 1 << log2Width;
  height = 1 << log2Height;
  try {
    orb::AssignPlane(data, 2 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0.0f);
  } catch (std::exception const&) {  // of memory, or of the length of an array
    return 0;
  }
  return 1;
}

void CFourierPlane::Transform(int inverse) {
  if (data.empty()) return;
  std::size_t const longest = static_cast<std::size_t>(std::max(width, height));
  try {
    twiddles.resize(2 * longest);
    lineA.resize(2 * longest);
    lineB.resize(2 * longest);
    orb::AlignedFloats block(longest * static_cast<std::size_t>(orb::kFourierValue));
    MakeTwiddles(width);
    TransformRows(inverse, block.Data());
    if (height != width) MakeTwiddles(height);
    TransformColumns(inverse, block.Data());
  } catch (std::exception const&) {
  }
  lineA = std::vector<float>();
  lineB = std::vector<float>();
  twiddles = std::vector<float>();
}

void CFourierPlane::MakeTwiddles(int n) {
  twiddles.resize(std::max(twiddles.size(), 2 * static_cast<std::size_t>(std::max(n, 1))));
  float* const w = twiddles.data();
  double const step = static_cast<float>(6.283185307179586 / n);
  std::ptrdiff_t const whole = n;
  std::ptrdiff_t const quarter = whole / 4;
  std::ptrdiff_t const half = whole / 2;
  std::ptrdiff_t const threeQuarters = 3 * whole / 4;
  auto const re = [w](std::ptrdiff_t k) -> float& { return w[2 * k]; };
  auto const im = [w](std::ptrdiff_t k) -> float& { return w[2 * k + 1]; };
  for (std::ptrdiff_t k = 0; k <= quarter; ++k) {
    float const c = static_cast<float>(std::cos(static_cast<double>(k) * step));
    // Order fixed: on the axes, and for two points, the later line stands.
    re(k) = c;
    im(quarter - k) = -c;
    re(half - k) = -c;
    im(quarter + k) = -c;
    re(half + k) = -c;
    im(threeQuarters - k) = c;
    if (k > 0) re(whole - k) = c;
    if (k < quarter) im(threeQuarters + k) = c;
  }
}

CFourierPlane::Complex CFourierPlane::GetTwiddle(int m, int k, int n) const {
  std::size_t const i = 2 * static_cast<std::size_t>(static_cast<long long>(n / m) * k % n);
  return {twiddles[i], twiddles[i + 1]};
}

float* CFourierPlane::TransformLine(int n, int log2n, int inverse) {
  float* x = lineA.data();
  float* y = lineB.data();
  for (int pass = 1; pass <= log2n; ++pass) {
    Reorder(x, y, n, pass);
    std::swap(x, y);
  }
  for (int s = 1; s < n; s *= 2) {
    for (int b = 0; b < n; b += 2 * s) {
      for (int i = 0; i < s; ++i) {
        Complex const w = GetTwiddle(2 * s, i, n);
        double const re = w.re;
        double const im = inverse == 1 ? -w.im : w.im;
        float const* const p = x + 2 * (b + i);
        float const* const q = p + 2 * s;
        float* const sum = y + 2 * (b + i);
        float* const difference = sum + 2 * s;
        double const tRe = re * q[0] - im * q[1];
        double const tIm = re * q[1] + im * q[0];
        sum[0] = static_cast<float>(p[0] + tRe);
        sum[1] = static_cast<float>(p[1] + tIm);
        difference[0] = static_cast<float>(p[0] - tRe);
        difference[1] = static_cast<float>(p[1] - tIm);
      }
    }
    std::swap(x, y);
  }
  double const root = static_cast<float>(std::sqrt(static_cast<double>(n)));
  for (int i = 0; i < 2 * n; ++i) x[i] = static_cast<float>(x[i] / root);
  return x;
}

void CFourierPlane::TransformRows(int inverse, float* block) {
  std::ptrdiff_t const stride = 2 * static_cast<std::ptrdiff_t>(width);
  std::ptrdiff_t y = 0;
  if (width >= orb::kFourierLanes) {
    orb::FourierLines const lines{width, log2Width, twiddles.data(), inverse == 1, block};
    for (; y + orb::kFourierLanes <= height; y += orb::kFourierLanes) {
      if (AreZero(data.data() + y * stride, orb::kFourierLanes * stride)) continue;  // most rows of a small blur
      orb::LoadRows(lines, data.data() + y * stride, stride);
      orb::TransformBlock(lines);
      orb::StoreRows(lines, data.data() + y * stride, stride);
    }
  }
  for (; y < height; ++y) {  // fewer than a block, or too short for one
    std::copy_n(data.data() + y * stride, stride, lineA.data());
    std::copy_n(TransformLine(width, log2Width, inverse), stride, data.data() + y * stride);
  }
}

void CFourierPlane::TransformColumns(int inverse, float* block) {
  std::ptrdiff_t const stride = 2 * static_cast<std::ptrdiff_t>(width);
  std::ptrdiff_t x = 0;
  orb::FourierLines const lines{height, log2Height, twiddles.data(), inverse == 1, block};
  for (; x + orb::kFourierLanes <= width; x += orb::kFourierLanes) {
    orb::LoadColumns(lines, data.data() + 2 * x, stride);
    orb::TransformBlock(lines);
    orb::StoreColumns(lines, data.data() + 2 * x, stride);
  }
  for (; x < width; ++x) {
    float* const column = data.data() + 2 * x;
    for (std::ptrdiff_t y = 0; y < height; ++y) std::copy_n(column + y * stride, 2, lineA.data() + 2 * y);
    float const* const line = TransformLine(height, log2Height, inverse);
    for (std::ptrdiff_t y = 0; y < height; ++y) std::copy_n(line + 2 * y, 2, column + y * stride);
  }
}
