#include <orbimg/filters/side_sums_internal.h>

#include <orbimg/filters/clamped_columns_internal.h>

namespace orb {

SideSums::SideSums(CFilterKernel const& kernel, int initWidth) : radius(kernel.radius), width(initWidth) {
  for (int i = 0; i < kernel.count; ++i) weights.push_back(kernel.ValueAt(i));
}

void SideSums::Sum(float* const* rows, int rowCount, int begin, int inside, int outside, int end) {
  stride = static_cast<std::size_t>(rowCount) + 2 * static_cast<std::size_t>(radius);
  SumSide(rows, begin, inside, left);
  SumSide(rows, outside, end, right);
}

// Sums that begin in one column and end in the next are made and left.
void SideSums::SumSide(float* const* rows, int begin, int end, Side& side) {
  side.begin = begin;
  side.columns = end - begin;
  if (side.columns == 0) return;
  std::size_t const reach = 2 * static_cast<std::size_t>(radius);
  std::size_t const columns = static_cast<std::size_t>(side.columns);
  line.resize(columns + reach);
  samples.resize(line.size() * stride);
  for (std::size_t k = 0; k < stride; ++k) {
    CopyClamped(rows[k], width, std::ptrdiff_t{begin} - radius, std::ptrdiff_t{end} + radius, line.data());
    for (std::size_t c = 0; c < line.size(); ++c) samples[c * stride + k] = line[c];
  }
  taps.clear();
  for (std::size_t row = 0; row <= reach; ++row) {
    for (std::size_t column = 0; column <= reach; ++column) {
      taps.push_back(Tap{weights[row * (reach + 1) + column], samples.data() + column * stride + row});
    }
  }
  side.sums.resize(columns * stride);
  SumTapsNarrowRow(taps.data(), taps.size(), static_cast<std::ptrdiff_t>(columns * stride - reach), side.sums.data());
}

void SideSums::CopyRow(int row, float* out) const {
  for (Side const* side : {&left, &right}) {
    float* const to = out + (side->begin - left.begin);
    float const* const from = side->sums.data() + row;
    for (int c = 0; c < side->columns; ++c) to[c] = from[static_cast<std::size_t>(c) * stride];
  }
}

}  // namespace orb
