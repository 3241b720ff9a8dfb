// Smallest and largest of a run of samples. The storage library implements this, as CImage::GetMinMax needs it.
#pragma once

#include <cstddef>

#include <platform/export.h>

namespace orb {

template <typename T>
struct Extrema {
  T min;
  T max;
};

// Every sample lowers found.min or raises found.max if it is strictly beyond it. So a sample that is not a number is
// passed over, but one that `found` started with stays; of a 0.0 and a -0.0 the earlier one stays.
ORBCIM_API void WidenExtrema(float const* samples, std::size_t count, Extrema<float>& found);
ORBCIM_API void WidenExtrema(double const* samples, std::size_t count, Extrema<double>& found);

}  // namespace orb
