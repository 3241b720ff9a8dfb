#include <orbimg/core/extrema_internal.h>
#include <orbimg/core/row_kernel.h>

namespace orb {

namespace {

// Enough for several vectors of every width, so that the comparisons of one do not wait for those of another.
constexpr std::size_t kLanes = 64;

// The extrema in value, taken in lanes that all start from `found`. The comparisons put the sample first, so that one
// that is not a number loses. Which of two equal zeros wins depends on the lanes.
template <typename T>
[[gnu::always_inline]] inline Extrema<T> WidenInLanes(T const* samples, std::size_t count, Extrema<T> const& found) {
  T low[kLanes];
  T high[kLanes];
  for (std::size_t k = 0; k < kLanes; ++k) {
    low[k] = found.min;
    high[k] = found.max;
  }
  std::size_t i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    for (std::size_t k = 0; k < kLanes; ++k) {
      T const v = samples[i + k];
      low[k] = v < low[k] ? v : low[k];
      high[k] = v > high[k] ? v : high[k];
    }
  }
  for (std::size_t k = 0; i + k < count; ++k) {
    T const v = samples[i + k];
    low[k] = v < low[k] ? v : low[k];
    high[k] = v > high[k] ? v : high[k];
  }
  Extrema<T> widened = found;
  for (std::size_t k = 0; k < kLanes; ++k) {
    widened.min = low[k] < widened.min ? low[k] : widened.min;
    widened.max = high[k] > widened.max ? high[k] : widened.max;
  }
  return widened;
}

ORB_ROW_KERNEL Extrema<float> WidenFloats(float const* samples, std::size_t count, Extrema<float> const& found) {
  return WidenInLanes(samples, count, found);
}

ORB_ROW_KERNEL Extrema<double> WidenDoubles(double const* samples, std::size_t count, Extrema<double> const& found) {
  return WidenInLanes(samples, count, found);
}

template <typename T>
T FirstZero(T const* samples) {
  while (*samples != T(0)) ++samples;
  return *samples;
}

// A new extremum of zero came from the first zero there is, whatever its sign.
template <typename T>
void Settle(T const* samples, Extrema<T> const& widened, Extrema<T>& found) {
  if (widened.min < found.min) found.min = widened.min == T(0) ? FirstZero(samples) : widened.min;
  if (widened.max > found.max) found.max = widened.max == T(0) ? FirstZero(samples) : widened.max;
}

}  // namespace

void WidenExtrema(float const* samples, std::size_t count, Extrema<float>& found) {
  Settle(samples, WidenFloats(samples, count, found), found);
}

void WidenExtrema(double const* samples, std::size_t count, Extrema<double>& found) {
  Settle(samples, WidenDoubles(samples, count, found), found);
}

}  // namespace orb
