// The real transform of many lines at once.
//
// Sample t of line l stands at [t * lanes + l]: neighbouring lines are neighbours in memory, and each step of the
// transform does the same to all of them. A pass makes, from the spectra of all subsequences of one length, those of
// the subsequences of twice or four times the length (the inverse: half or a quarter).
#pragma once

#include <cstddef>

namespace orb {

// Two cache lines of columns at a time: fewer, and the time goes into finding the pages of far rows.
inline constexpr int kTransformLanes = 32;

// One pass: from `from` to `to`, which do not overlap. `half` is half the line length; `span` is, in the forward
// direction, the number of subsequences after the pass, in the inverse direction before it.
struct TransformPass {
  float const* from;
  float* to;
  std::ptrdiff_t half;
  std::ptrdiff_t span;
  std::ptrdiff_t lanes;
  float const* cosTable;  // of 2 pi j/n for j = 0 .. half / 2
  float const* sinTable;
};

// The radix 2 pass between samples and spectra of two samples; `span` is half.
void PairPass(TransformPass const& pass);
// Two passes of radix 2 in one.
void ForwardQuadPass(TransformPass const& pass);
void InverseQuadPass(TransformPass const& pass);

// kTransformLanes rows of `length` samples, `stride` apart, to interleaved lines, each sample times `factor`; and back.
// `length` is a multiple of kTransformLanes.
void InterleaveRows(float const* rows, std::ptrdiff_t stride, std::ptrdiff_t length, double factor, float* lines);
void SeparateRows(float const* lines, std::ptrdiff_t length, float* rows, std::ptrdiff_t stride);

// kTransformLanes columns, of rows that lie `stride` apart. Gathering asks for the memory at `soon`, of the same shape,
// where they will be scattered to.
void GatherColumns(float const* image, std::ptrdiff_t stride, std::ptrdiff_t length, double factor, float* lines,
                   float const* soon);
void ScatterColumns(float const* lines, std::ptrdiff_t length, float* image, std::ptrdiff_t stride);

}  // namespace orb
