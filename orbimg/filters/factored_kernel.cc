#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include <orbimg/filters/factored_kernel_internal.h>

namespace orb {

namespace {

// What a weight is in proportion to the product of its factors, at its least and its most along a row of the table.
struct Ratios {
  double least;
  double most;
};

Ratios RatiosOfRow(CFilterKernel const& kernel, std::vector<double> const& factors, int row) {
  Ratios ratios{std::numeric_limits<double>::infinity(), 0.0};
  for (int column = 0; column < kernel.size; ++column) {
    auto const at = [&](int i) { return factors[static_cast<std::size_t>(i)]; };
    double const ratio = kernel.ValueAt(row * kernel.size + column) / (at(row) * at(column));
    ratios.least = std::min(ratios.least, ratio);
    ratios.most = std::max(ratios.most, ratio);
  }
  return ratios;
}

// The sums of the rows, scaled so that the products sum to what the weights do.
std::vector<double> StartingFactors(CFilterKernel const& kernel) {
  std::vector<double> factors(static_cast<std::size_t>(kernel.size), 0.0);
  double total = 0.0;
  for (int i = 0; i < kernel.count; ++i) {
    factors[static_cast<std::size_t>(i / kernel.size)] += kernel.ValueAt(i);
    total += kernel.ValueAt(i);
  }
  for (double& factor : factors) factor /= std::sqrt(total);
  return factors;
}

// Brings the middle of each row's ratios halfway to 1, again and again; both ends of the table have the same factors.
void Improve(CFilterKernel const& kernel, std::vector<double>& factors) {
  constexpr int kRounds = 100;
  std::vector<double> next(factors.size());
  for (int round = 0; round < kRounds; ++round) {
    for (int row = 0; row <= kernel.radius; ++row) {
      Ratios const ratios = RatiosOfRow(kernel, factors, row);
      auto const i = static_cast<std::size_t>(row);
      next[i] = next[factors.size() - 1 - i] = factors[i] * std::sqrt(std::sqrt(ratios.least * ratios.most));
    }
    factors.swap(next);
  }
}

double Deviation(CFilterKernel const& kernel, std::vector<double> const& factors) {
  double deviation = 0.0;
  for (int row = 0; row < kernel.size; ++row) {
    Ratios const ratios = RatiosOfRow(kernel, factors, row);
    if (!(ratios.least > 0.0 && ratios.most < std::numeric_limits<double>::infinity())) return ratios.most;
    deviation = std::max({deviation, 1.0 - ratios.least, ratios.most - 1.0});
  }
  return deviation;
}

// To 29 significant bits, half up.
double Shortened(double v) {
  constexpr int kDropped = 53 - 29;
  auto bits = std::bit_cast<std::uint64_t>(v) + (std::uint64_t{1} << (kDropped - 1));
  return std::bit_cast<double>(bits >> kDropped << kDropped);
}

}  // namespace

FactoredKernel::FactoredKernel(CFilterKernel const& kernel) {
  // A weight of 0 would have to be met exactly, or an infinite sample would count where it must not.
  for (int i = 0; i < kernel.count; ++i) {
    if (!(kernel.ValueAt(i) >= std::numeric_limits<float>::min() && kernel.ValueAt(i) <= 1.0f)) return;
  }
  if (kernel.count == 0) return;
  std::vector<double> factors = StartingFactors(kernel);
  Improve(kernel, factors);
  isFaithful = Deviation(kernel, factors) <= kMostDeviation;
  for (double const factor : factors) rowFactors.push_back(Shortened(factor));
  columnFactors.assign(factors.begin() + kernel.radius, factors.end());
}

}  // namespace orb
