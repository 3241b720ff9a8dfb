#include <algorithm>
#include <bit>

#include <orbimg/restoration/fourier_plane.h>
#include <orbimg/restoration/half_plane_internal.h>
#include <orbimg/restoration/half_plane_kernels.h>

namespace orb {

namespace {

constexpr std::ptrdiff_t kRowPadding = 32;

std::vector<float> TwiddlesOf(std::ptrdiff_t n) {
  CFourierPlane tables;
  tables.MakeTwiddles(static_cast<int>(n));
  return tables.twiddles;
}

// Of lines along both axes, and one value more.
std::size_t BlockSize(std::ptrdiff_t width, std::ptrdiff_t height) {
  return static_cast<std::size_t>((std::max(width, height) + 1) * kFourierValue);
}

int Log2(std::ptrdiff_t n) { return static_cast<int>(std::bit_width(static_cast<std::size_t>(n))) - 1; }

struct Complex {
  double re;
  double im;
};

// Of the spectrum of a + i b, frequencies v and -v, those of a and of b at v.
struct Parted {
  Complex a;
  Complex b;
};

Parted Part(Complex at, Complex mirror) {
  return {{(at.re + mirror.re) * 0.5, (at.im - mirror.im) * 0.5},
          {(at.im + mirror.im) * 0.5, (mirror.re - at.re) * 0.5}};
}

Complex FirstOf(float const* block, std::ptrdiff_t v) {
  return {block[v * kFourierValue], block[v * kFourierValue + kFourierLanes]};
}

void SetFirst(float* block, std::ptrdiff_t v, double re, double im) {
  block[v * kFourierValue] = static_cast<float>(re);
  block[v * kFourierValue + kFourierLanes] = static_cast<float>(im);
}

}  // namespace

void SpectrumFactors::Create(std::ptrdiff_t width, std::ptrdiff_t height) {
  stride = width / 2 + kRowPadding / 2;
  AssignPlane(inner, static_cast<std::size_t>(height * stride), 0.0f);
  zero.assign(static_cast<std::size_t>(height), 0.0f);
  middle.assign(static_cast<std::size_t>(height), 0.0f);
}

void SpectrumFactors::ToWiener(double noise) {
  auto const count = [](std::vector<float> const& values) { return static_cast<std::ptrdiff_t>(values.size()); };
  float largest = 0.0f;
  for (auto const* values : {&inner, &zero, &middle}) {
    largest = std::max(largest, LargestSquare(values->data(), count(*values)));
  }
  for (auto* values : {&inner, &zero, &middle}) InvertRow(values->data(), count(*values), largest * noise);
}

HalfPlane::HalfPlane(std::ptrdiff_t w, std::ptrdiff_t h)
    : width(w),
      height(h),
      stride(width + kRowPadding),
      data(static_cast<std::size_t>(height * stride)),
      rowTwiddles(TwiddlesOf(width)),
      columnTwiddles(TwiddlesOf(height)),
      block(BlockSize(width, height)),
      other(BlockSize(width, height)),
      samples(static_cast<std::size_t>(kRows * width)) {}

FourierLines HalfPlane::RowLines(bool isInverse) {
  return {width, Log2(width), rowTwiddles.data(), isInverse, block.Data()};
}

FourierLines HalfPlane::ColumnLines(bool isInverse) {
  return {height, Log2(height), columnTwiddles.data(), isInverse, block.Data()};
}

void HalfPlane::SplitRows(std::ptrdiff_t y) {
  FourierLines const lines = RowLines(false);
  LoadRowPairs(lines, samples.Data(), width);
  TransformBlock(lines);
  SplitSpectra(lines);
  StoreHalves(block.Data(), kFourierValue, width / 2, Row(y), stride);
  StoreHalves(block.Data() + width * kFourierValue, -kFourierValue, width / 2, Row(y + kFourierLanes), stride);
}

void HalfPlane::JoinRows(std::ptrdiff_t y) {
  FourierLines const lines = RowLines(true);
  LoadHalves(Row(y), stride, width / 2, other.Data());
  LoadHalves(Row(y + kFourierLanes), stride, width / 2, other.Data() + width / 2 * kFourierValue);
  JoinSpectra(lines, other.Data());
  TransformBlock(lines);
  StoreRowPairs(lines, samples.Data(), width);
}

// Line 0 of the block, in plain order: the two real columns, parted, multiplied and joined again. What follows with the
// other columns then leaves it alone.
void HalfPlane::FilterFirstColumn(SpectrumFactors& factors, float* values) const {
  for (std::ptrdiff_t v = 0; v <= height / 2; ++v) {
    std::ptrdiff_t const m = v == 0 ? 0 : height - v;
    Parted const p = Part(FirstOf(values, v), FirstOf(values, m));
    double const f = factors.zero[static_cast<std::size_t>(v)];
    double const g = factors.middle[static_cast<std::size_t>(v)];
    Complex const a{p.a.re * f, p.a.im * f};
    Complex const b{p.b.re * g, p.b.im * g};
    factors.Row(v)[0] = factors.Row(m)[0] = 1.0f;
    SetFirst(values, v, a.re - b.im, a.im + b.re);
    SetFirst(values, m, a.re + b.im, b.re - a.im);
  }
}

void HalfPlane::FilterColumns(SpectrumFactors& factors) {
  FourierLines const forward = ColumnLines(false);
  FourierLines back = ColumnLines(true);
  back.block = other.Data();
  for (std::ptrdiff_t left = 0; left < width / 2; left += kFourierLanes) {
    LoadColumns(forward, data.Data() + 2 * left, stride);
    TransformBlock(forward);
    if (left == 0) FilterFirstColumn(factors, block.Data());
    MultiplyLines(forward, factors.Row(0) + left, factors.stride, other.Data());
    TransformBlock(back);
    StoreColumns(back, data.Data() + 2 * left, stride);
  }
}

void HalfPlane::TakeRealParts(SpectrumFactors& factors) {
  FourierLines const lines = ColumnLines(false);
  for (std::ptrdiff_t left = 0; left < width / 2; left += kFourierLanes) {
    LoadColumns(lines, data.Data() + 2 * left, stride);
    TransformBlock(lines);
    StoreRealParts(lines, factors.Row(0) + left, factors.stride);
    if (left != 0) continue;
    for (std::ptrdiff_t v = 0; v < height; ++v) {
      Parted const p = Part(FirstOf(block.Data(), v), FirstOf(block.Data(), v == 0 ? 0 : height - v));
      factors.zero[static_cast<std::size_t>(v)] = static_cast<float>(p.a.re);
      factors.middle[static_cast<std::size_t>(v)] = static_cast<float>(p.b.re);
      factors.Row(v)[0] = 0.0f;
    }
  }
}

}  // namespace orb
