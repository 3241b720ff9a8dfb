// Row work of the nebula smoother.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include <orbimg/filters/convolution_kernels.h>

namespace orb {

// What stands for an edge sample: the largest float.
inline constexpr float kEdgeMarker = std::numeric_limits<float>::max();

// out = the marker where |laplacian| >= threshold, otherwise the sample. Returns whether any is the marker.
bool MarkEdgesRow(double const* laplacian, float const* samples, std::ptrdiff_t count, double threshold, float* out);

// nearest = the lesser of it and distance - reach
void LowerToRow(std::int32_t const* distance, std::int32_t reach, std::ptrdiff_t count, std::int32_t* nearest);

// The sums of weight * sample and of weight over the taps whose sample is not the marker, floats after each term.
void SumUnmarkedRow(Tap const* taps, std::size_t tapCount, std::ptrdiff_t count, float* sums, float* weights);

// dst = src where nearest is 0 or less or the weight is 0, otherwise sum / weight
void StoreMeansRow(float const* sums, float const* weights, std::int32_t const* nearest, float const* src,
                   std::ptrdiff_t count, float* dst);

}  // namespace orb
