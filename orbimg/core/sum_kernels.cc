#include <orbimg/core/sum_kernels.h>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

constexpr int kLanes = LaneSum::kLanes;
static_assert(kBlockColumns % kLanes == 0, "a block begins with the first partial sum");

template <typename T, typename Term>
[[gnu::always_inline]] inline void AddTerms(T const* values, std::ptrdiff_t count, double* lanes, Term term) {
  double sums[kLanes];
  for (int k = 0; k < kLanes; ++k) sums[k] = lanes[k];
  std::ptrdiff_t x = 0;
  for (; x + kLanes <= count; x += kLanes) {
    for (int k = 0; k < kLanes; ++k) sums[k] += term(values[x + k]);
  }
  for (int k = 0; x + k < count; ++k) sums[k] += term(values[x + k]);
  for (int k = 0; k < kLanes; ++k) lanes[k] = sums[k];
}

struct Plain {
  [[gnu::always_inline]] double operator()(double v) const { return v; }
};

struct SquaredDeviation {
  double mean;
  [[gnu::always_inline]] double operator()(double v) const { return (v - mean) * (v - mean); }
};

ORB_ROW_KERNEL void AddFloats(float const* values, std::ptrdiff_t count, double* lanes) {
  EachBlock(values, count,
            [&](std::ptrdiff_t begin, std::ptrdiff_t end) { AddTerms(values + begin, end - begin, lanes, Plain()); });
}

ORB_ROW_KERNEL void AddDoubles(double const* values, std::ptrdiff_t count, double* lanes) {
  AddTerms(values, count, lanes, Plain());
}

ORB_ROW_KERNEL void AddFloatDeviations(float const* values, std::ptrdiff_t count, double mean, double* lanes) {
  EachBlock(values, count, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    AddTerms(values + begin, end - begin, lanes, SquaredDeviation{mean});
  });
}

ORB_ROW_KERNEL void AddDoubleDeviations(double const* values, std::ptrdiff_t count, double mean, double* lanes) {
  AddTerms(values, count, lanes, SquaredDeviation{mean});
}

}  // namespace

void LaneSum::AddRow(float const* values, std::ptrdiff_t count) { AddFloats(values, count, lanes); }

void LaneSum::AddRow(double const* values, std::ptrdiff_t count) { AddDoubles(values, count, lanes); }

void LaneSum::AddSquaredDeviations(float const* values, std::ptrdiff_t count, double mean) {
  AddFloatDeviations(values, count, mean, lanes);
}

void LaneSum::AddSquaredDeviations(double const* values, std::ptrdiff_t count, double mean) {
  AddDoubleDeviations(values, count, mean, lanes);
}

double LaneSum::Total() const {
  double folded[kLanes];
  for (int k = 0; k < kLanes; ++k) folded[k] = lanes[k];
  for (int half = kLanes / 2; half > 0; half /= 2) {
    for (int k = 0; k < half; ++k) folded[k] += folded[k + half];
  }
  return folded[0];
}

}  // namespace orb
