#include <orbimg/core/histogram_kernels.h>

#include <algorithm>
#include <climits>

#include <orbimg/core/constants.h>
#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

constexpr int kTables = 4;
constexpr int kLargestShared = 65536;  // classes; with more, one table is enough: they would only push each other out
constexpr std::ptrdiff_t kChunk = 1024;

template <typename T>
[[gnu::always_inline]] inline void FindClasses(T const* values, std::ptrdiff_t count, double lo, double hi, int bins,
                                               int* classes) {
  double const span = hi - lo;
  double const last = bins - 1;
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    double const v = values[x];
    double const position = (v - lo) / span * bins;
    // Not-a-number fails the first comparison, so that no conversion meets it.
    double const atLeast = position > 0.0 ? position : 0.0;
    int const held = static_cast<int>(atLeast < last ? atLeast : last);
    bool const counted = (lo <= v) & (v <= hi);
    classes[x] = counted ? held : bins;
  }
}

ORB_ROW_KERNEL void FindFloatClasses(float const* values, std::ptrdiff_t count, double lo, double hi, int bins,
                                     int* classes) {
  FindClasses(values, count, lo, hi, bins, classes);
}

ORB_ROW_KERNEL void FindDoubleClasses(double const* values, std::ptrdiff_t count, double lo, double hi, int bins,
                                      int* classes) {
  FindClasses(values, count, lo, hi, bins, classes);
}

void FindClassesOf(float const* values, std::ptrdiff_t count, double lo, double hi, int bins, int* classes) {
  FindFloatClasses(values, count, lo, hi, bins, classes);
}

void FindClassesOf(double const* values, std::ptrdiff_t count, double lo, double hi, int bins, int* classes) {
  FindDoubleClasses(values, count, lo, hi, bins, classes);
}

}  // namespace

Histogram::Histogram(int initBins, double initLo, double initHi)
    : bins(initBins),
      lo(initLo),
      hi(initHi),
      tables(initBins <= kLargestShared ? kTables : 1),
      stride(static_cast<std::size_t>(initBins) + 1),
      counters(stride * static_cast<std::size_t>(tables)) {}

void Histogram::CountRow(float const* values, std::ptrdiff_t count) { CountChunks(values, count); }

void Histogram::CountRow(double const* values, std::ptrdiff_t count) { CountChunks(values, count); }

template <typename T>
void Histogram::CountChunks(T const* values, std::ptrdiff_t count) {
  int classes[kChunk];
  for (std::ptrdiff_t x = 0; x < count; x += kChunk) {
    std::ptrdiff_t const n = std::min(kChunk, count - x);
    FindClassesOf(values + x, n, lo, hi, bins, classes);
    CountClasses(classes, n);
  }
}

void Histogram::CountClasses(int const* classes, std::ptrdiff_t count) {
  std::uint32_t* const first = counters.data();
  std::ptrdiff_t x = 0;
  if (tables == kTables) {
    std::uint32_t* const second = first + stride;
    std::uint32_t* const third = second + stride;
    std::uint32_t* const fourth = third + stride;
    for (; x + kTables <= count; x += kTables) {
      ++first[classes[x]];
      ++second[classes[x + 1]];
      ++third[classes[x + 2]];
      ++fourth[classes[x + 3]];
    }
  }
  for (; x < count; ++x) ++first[classes[x]];
}

void Histogram::Store(int* counts) const {
  for (std::size_t i = 0; i + 1 < stride; ++i) {
    std::uint64_t sum = 0;
    for (std::size_t t = 0; t < static_cast<std::size_t>(tables); ++t) sum += counters[t * stride + i];
    counts[i] = static_cast<int>(std::min<std::uint64_t>(sum, INT_MAX));
  }
}

ORB_ROW_KERNEL void HistogramBrightnessRow(float const* red, float const* green, float const* blue,
                                           std::ptrdiff_t count, FloatScale r, FloatScale g, FloatScale b,
                                           double* brightness) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t x = 0; x < count; ++x) {
    brightness[x] = kGreenWeight * (static_cast<double>(green[x]) - g.min) * g.scale +
                    kBlueWeight * (static_cast<double>(blue[x]) - b.min) * b.scale +
                    kRedWeight * (static_cast<double>(red[x]) - r.min) * r.scale;
  }
}

}  // namespace orb
