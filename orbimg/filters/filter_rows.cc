#include <orbimg/filters/filter_rows.h>

#include <algorithm>

#include <orbimg/filters/edge_rules_internal.h>
#include <orbimg/filters/sample_order_internal.h>
#include <orbimg/filters/window_rows_internal.h>

namespace {

// Intended: a float after each term, as the sums at the sides of an image always were.
template <typename Sample>
float NarrowSum(CFilterKernel const& kernel, int m, Sample sample) {
  float sum = 0.0f;
  for (int dy = -m; dy <= m; ++dy) {
    for (int dx = -m; dx <= m; ++dx) {
      sum = static_cast<float>(sum + static_cast<double>(kernel.Value(dx, dy)) * sample(dx, dy));
    }
  }
  return sum;
}

}  // namespace

CFilterRows::CFilterRows(COrbImage* initImage, int initRadius, int initX0, int initY0, int plane, int flags) {
  Set(initImage, initRadius, initX0, initY0, plane, flags);
}

CFilterRows::~CFilterRows() {
  if (rows != nullptr && image != nullptr) image->UnlockAll();
}

int CFilterRows::Set(COrbImage* newImage, int newRadius, int newX0, int newY0, int plane, int flags) {
  image = newImage;
  x0 = newX0;
  y0 = newY0;
  if (plane >= image->GetPlanes() || plane < 0 || newRadius < 0) return 0;
  if (newRadius != radius || rows == nullptr) {
    rows = std::make_unique<float*[]>(2 * static_cast<std::size_t>(newRadius) + 1);
    radius = newRadius;
  }
  orb::SetWindowRows(*image, x0, y0, plane, radius, static_cast<unsigned>(flags), rows.get());
  return 1;
}

float CFilterRows::Sample(int dy, std::int64_t x) const {
  return rows[static_cast<std::size_t>(radius + dy)][std::int64_t{orb::ClampIndex(x, image->GetWidth())} - x0];
}

double CFilterRows::Convolve(CFilterKernel const& kernel, int x) const {
  if (!HasSamples()) return 0.0;
  std::int64_t const column = x;
  if (radius == kernel.radius && column - radius >= 0 && column + radius < image->GetWidth()) {
    double sum = 0.0;
    float const* weight = kernel.values.get();
    for (int k = 0; k < kernel.size; ++k) {
      float const* const row = rows[static_cast<std::size_t>(k)] + (column - radius - x0);
      for (int i = 0; i < kernel.size; ++i) sum += static_cast<double>(*weight++) * row[i];
    }
    return sum;
  }
  int const m = std::min(radius, kernel.radius);
  if (m == 0) return 0.0;
  return NarrowSum(kernel, m, [&](int dx, int dy) { return Sample(dy, column + dx); });
}

float CFilterRows::ConvolveClip(CFilterKernel const& kernel, int x, float lo, float hi) const {
  int const m = std::min(radius, kernel.radius);
  if (m == 0 || !HasSamples()) return 0.0f;
  return NarrowSum(kernel, m, [&](int dx, int dy) {
    float const sample = Sample(dy, std::int64_t{x} + dx);
    return sample <= lo ? lo : sample >= hi ? hi : sample;
  });
}

float CFilterRows::Pixel(int x, int y) const {
  std::int64_t const i = std::int64_t{radius} - y0 + y;
  // Intended: up to `radius` only, though there are as many rows again.
  if (i < 0 || i > radius || !HasSamples()) return 0.0f;
  std::int64_t const column = std::int64_t{x} - x0;
  if (column < 0 || column >= image->GetWidth() || x >= image->GetWidth()) return 0.0f;
  return rows[static_cast<std::size_t>(i)][column];
}

float* CFilterRows::Collect(CFilterKernel const& mask, int x) {
  int const m = std::min(radius, mask.radius);
  if (m == 0 || !HasSamples()) return sorted.get();
  if (sortedSize != mask.count) {
    sorted = std::make_unique_for_overwrite<float[]>(static_cast<std::size_t>(mask.count));
    sortedSize = mask.count;
  }
  sortedCount = 0;
  for (int dy = -m; dy <= m; ++dy) {
    for (int dx = -m; dx <= m; ++dx) {
      if (mask.Value(dx, dy) != 1.0f) continue;
      sorted[static_cast<std::size_t>(sortedCount++)] = Sample(dy, std::int64_t{x} + dx);
    }
  }
  orb::SortSamples(sorted.get(), static_cast<std::size_t>(sortedCount));
  return sorted.get();
}

float CFilterRows::Rank(CFilterKernel const& mask, int x, int index) {
  Collect(mask, x);
  return index < 0 || index >= sortedCount ? 0.0f : sorted[static_cast<std::size_t>(index)];
}
