#include <orbimg/restoration/lucy_kernels.h>

#include <limits>

#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

// Calls term(i, b) for every pixel; the compiler makes two loops of it.
template <typename Term>
[[gnu::always_inline]] inline void EachPixel(LucyBackground const& background, std::ptrdiff_t count, Term term) {
  if (background.isPlane) {
    ORB_COLUMNS_INDEPENDENT
    for (std::ptrdiff_t i = 0; i < count; ++i) term(i, static_cast<double>(background.values[i]));
    return;
  }
  double const b = background.values[0];
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) term(i, b);
}

}  // namespace

ORB_ROW_KERNEL std::ptrdiff_t ChiSquareTerms(LucyRows const& rows, double adu, double variance, std::ptrdiff_t count,
                                             double* terms) {
  EachPixel(rows.background, count, [&](std::ptrdiff_t i, double b) {
    double const model = rows.model[i];
    double const t = rows.weight[i] * adu;
    double const r = (model - rows.data[i]) * t;
    double const v = t * (model + b) + variance;
    double const term = r * r / v;
    terms[i] = rows.weight[i] > 0.0f && v != 0.0 ? term : 0.0;
  });
  std::ptrdiff_t n = 0;
  for (std::ptrdiff_t i = 0; i < count; ++i) n += rows.weight[i] > 0.0f ? 1 : 0;
  return n;
}

ORB_ROW_KERNEL void LineSearchTerms(LucyRows const& rows, float const* g, double c, double c0, std::ptrdiff_t count,
                                    double* first, double* second) {
  EachPixel(rows.background, count, [&](std::ptrdiff_t i, double b) {
    double const w = rows.weight[i];
    double const m = (g[i] * c + rows.model[i] + b) * w + c0;
    double const d = (rows.data[i] + b) * w + c0;
    double const q = w * g[i] / m;
    double const slope = (d / m - 1.0) * (w * g[i]);
    double const curve = q * q * d;
    first[i] = w > 0.0 ? slope : 0.0;
    second[i] = w > 0.0 ? curve : 0.0;
  });
}

ORB_ROW_KERNEL void TurboTerms(LucyRows const& rows, float const* estimate, float const* g, float const* before,
                               double adu, double c0, std::ptrdiff_t count, double* a, double* b) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const p = rows.weight[i] * adu;
    // Intended: the estimate, not the model.
    double const e = estimate[i] + c0;
    double const q = rows.data[i] + c0;
    double const h = before[i];
    a[i] = g[i] * h * p * q / (e * e);
    b[i] = p * q * (h * h) / (e * e);
  }
}

ORB_ROW_KERNEL void LimitTerms(float const* estimate, float const* step, double sign, std::ptrdiff_t count,
                               double* terms) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    double const v = -static_cast<double>(estimate[i]) / step[i];
    terms[i] = step[i] * sign > 0.0 ? v : std::numeric_limits<double>::quiet_NaN();
  }
}

ORB_ROW_KERNEL void RatioRow(LucyRows const& rows, double c0, std::ptrdiff_t count, float* ratio) {
  EachPixel(rows.background, count, [&](std::ptrdiff_t i, double b) {
    double const num = ratio[i] + b + c0;
    double const sum = rows.model[i] + b + c0;
    double const den = sum == 0.0 ? 1.0 : sum;
    ratio[i] = static_cast<float>(num / den * rows.weight[i]);
  });
}

ORB_ROW_KERNEL void MixStepRow(double alpha, std::ptrdiff_t count, float* step, float* before) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    float const old = step[i];
    step[i] = static_cast<float>(old + alpha * before[i]);
    before[i] = old;
  }
}

ORB_ROW_KERNEL void TakeStepRow(double c, std::ptrdiff_t count, float* step, float* sum) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    float const scaled = static_cast<float>(c * step[i]);
    step[i] = scaled;
    sum[i] = static_cast<float>(static_cast<double>(sum[i]) + scaled);
  }
}

}  // namespace orb
