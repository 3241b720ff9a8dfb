// Terms of sums over pixels, and the steps that join planes, for the iteration of CImgLucy.
//
// Sums run in the order of the pixels, term by term; only the terms are computed side by side.
#pragma once

#include <cstddef>

namespace orb {

// The background at every pixel.
struct LucyBackground {
  float const* values;
  bool isPlane;  // one a pixel; otherwise one for all

  LucyBackground From(std::ptrdiff_t pixel) const { return {isPlane ? values + pixel : values, isPlane}; }
};

// Rows of one plane from a pixel on.
struct LucyRows {
  float const* weight;
  float const* model;
  float const* data;
  LucyBackground background;
};

// t = weight adu, ((model - data) t)^2/(t (model + b) + variance); 0 where the divisor is 0 or the weight not above 0.
// Returns how many weights are above 0.
std::ptrdiff_t ChiSquareTerms(LucyRows const& rows, double adu, double variance, std::ptrdiff_t count, double* terms);

// Of the first and the second derivative of the log-likelihood at factor `c` of the step; 0 without weight.
void LineSearchTerms(LucyRows const& rows, float const* g, double c, double c0, std::ptrdiff_t count, double* first,
                     double* second);

// p = weight adu, e = estimate + c0, q = data + c0: a = g before p q/(e e), b = p q before^2/(e e).
void TurboTerms(LucyRows const& rows, float const* estimate, float const* g, float const* before, double adu, double c0,
                std::ptrdiff_t count, double* a, double* b);

// -estimate/step where the step is below 0 (sign -1) or above 0 (sign 1), otherwise not a number.
void LimitTerms(float const* estimate, float const* step, double sign, std::ptrdiff_t count, double* terms);

// ratio = (data + b + c0)/(model + b + c0) weight, a divisor of exactly 0 being 1; `ratio` holds the data before.
void RatioRow(LucyRows const& rows, double c0, std::ptrdiff_t count, float* ratio);

// step + alpha before -> step, step -> before
void MixStepRow(double alpha, std::ptrdiff_t count, float* step, float* before);

// c step -> step, sum + step -> sum
void TakeStepRow(double c, std::ptrdiff_t count, float* step, float* sum);

}  // namespace orb
