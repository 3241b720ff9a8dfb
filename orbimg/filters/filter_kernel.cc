#include <orbimg/filters/filter_kernel.h>

#include <cmath>
#include <cstdint>

#include <orbimg/core/truncate.h>
#include <platform/object.h>

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kRadiusItself = -1.0;
constexpr int kLargestRadius = 23169;  // of a table whose cells an int counts

double RangeOrRadius(double range, int radius) { return range == kRadiusItself ? radius : range; }

// Calls visit(weight, dx, dy) for all cells but the centre with dx^2 + dy^2 <= limit; returns how many there are.
template <typename Visit>
int EachNeighbourWithin(CFilterKernel& kernel, double limit, Visit visit) {
  int const r = kernel.radius;
  int n = 0;
  for (int dy = -r; dy <= r; ++dy) {
    for (int dx = -r; dx <= r; ++dx) {
      if ((dx == 0 && dy == 0) || !(dx * dx + dy * dy <= limit)) continue;
      visit(*kernel.Address(dx, dy));
      ++n;
    }
  }
  return n;
}

template <typename Number>
int SetFrom(CFilterKernel& kernel, int radius, Number const* list, int count) {
  if (kernel.Create(radius, count, 0) == 0) return 0;
  int const given = count == 0 ? kernel.count : count;
  for (int i = 0; i < given; ++i) kernel.values[static_cast<std::size_t>(i)] = static_cast<float>(list[i]);
  return 1;
}

}  // namespace

CFilterKernel::CFilterKernel(int initRadius, float const* list, int listed) { SetValues(initRadius, list, listed); }

CFilterKernel::CFilterKernel(int initRadius, double const* list, int listed) { SetValues(initRadius, list, listed); }

CFilterKernel::~CFilterKernel() = default;

int CFilterKernel::Create(int newRadius, int listed, int /*clear*/) {
  values.reset();
  radius = size = count = 0;
  if (newRadius < 0) return 0;
  if (newRadius > kLargestRadius) AfxThrowMemoryException();
  int const newSize = 2 * newRadius + 1;
  values = std::make_unique<float[]>(static_cast<std::size_t>(newSize) * static_cast<std::size_t>(newSize));
  radius = newRadius;
  size = newSize;
  count = newSize * newSize;
  return listed > count ? 0 : 1;
}

int CFilterKernel::SetValues(int newRadius, float const* list, int listed) {
  return SetFrom(*this, newRadius, list, listed);
}

int CFilterKernel::SetValues(int newRadius, double const* list, int listed) {
  return SetFrom(*this, newRadius, list, listed);
}

float* CFilterKernel::Address(int dx, int dy) {
  std::int64_t const index = (std::int64_t{dy} + radius) * size + dx + radius;
  return index < 0 || index >= count ? nullptr : &values[static_cast<std::size_t>(index)];
}

float CFilterKernel::Value(int dx, int dy) const {
  std::int64_t const index = (std::int64_t{dy} + radius) * size + dx + radius;
  return index < 0 || index >= count ? 0.0f : values[static_cast<std::size_t>(index)];
}

float CFilterKernel::ValueAt(int index) const {
  return index < 0 || index >= count ? 0.0f : values[static_cast<std::size_t>(index)];
}

void CFilterKernel::Normalize() {
  double sum = 0.0;
  for (int i = 0; i < count; ++i) sum += ValueAt(i);
  if (sum == 0.0) return;
  for (int i = 0; i < count; ++i) {
    float& weight = values[static_cast<std::size_t>(i)];
    weight = static_cast<float>(weight / sum);
  }
}

int CFilterKernel::MakeGaussian(int newRadius, double sigma) {
  if (Create(newRadius, 0, 0) == 0) return 0;
  sigma = RangeOrRadius(sigma, radius);
  double const variance = sigma * sigma;
  for (int dy = -radius; dy <= radius; ++dy) {
    for (int dx = -radius; dx <= radius; ++dx) {
      double const density = std::exp(-(dx * dx + dy * dy) / (2.0 * variance)) / (kTwoPi * variance);
      *Address(dx, dy) = static_cast<float>(density);
    }
  }
  Normalize();
  return 1;
}

int CFilterKernel::MakeMean(int newRadius, double range, double weight) {
  if (Create(newRadius, 0, 1) == 0) return 0;
  EachNeighbourWithin(*this, RangeOrRadius(range, radius), [&](float& cell) { cell = static_cast<float>(weight); });
  *Address(0, 0) = 1.0f;
  Normalize();
  return 1;
}

int CFilterKernel::MakeSharp(double range, double weight) {
  int const truncated = orb::TruncateToInt(range);
  if (Create(truncated < 1 ? 1 : truncated, 0, 1) == 0) return 0;
  int const n = EachNeighbourWithin(*this, RangeOrRadius(range, radius),
                                    [&](float& cell) { cell = static_cast<float>(-weight); });
  *Address(0, 0) = static_cast<float>(2.0 * n);
  Normalize();
  return 1;
}

int CFilterKernel::MakeEdge(int newRadius, double range) {
  if (Create(newRadius, 0, 1) == 0) return 0;
  int const n = EachNeighbourWithin(*this, RangeOrRadius(range, radius), [](float& cell) { cell = -1.0f; });
  *Address(0, 0) = static_cast<float>(n);
  return 1;
}

int CFilterKernel::MakeDisk(int newRadius, double range) {
  if (Create(newRadius, 0, 1) == 0) return 0;
  range = RangeOrRadius(range, radius);
  double const limit = range * range;
  int const n = EachNeighbourWithin(*this, limit, [](float& cell) { cell = 1.0f; });
  if (!(0.0 <= limit)) return n;  // a range that is not a number
  *Address(0, 0) = 1.0f;
  return n + 1;
}
