// CFilterKernel: a square table of weights around a centre.
//
// The table is row-major: the weight at offset (dx, dy) from the centre stands at (dy + radius) * size + dx + radius.
// Builders work in double and narrow each weight to float as they store it. In all of them a `range` or `sigma` of
// exactly -1.0 stands for the radius. They return 1; 0 for a negative radius, which leaves the kernel empty. A table of
// more cells than an int counts is std::bad_alloc, like lack of memory.
//
// Intended: MakeMean, MakeSharp and MakeEdge compare dx^2 + dy^2 with `range` itself (2 takes a 3 x 3 square, 4 the
// disk of radius 2), MakeDisk with its square.
#pragma once

#include <memory>

#include <platform/export.h>

class ORBIMG_API CFilterKernel {
 public:
  CFilterKernel() = default;
  CFilterKernel(int radius, float const* values, int count);
  CFilterKernel(int radius, double const* values, int count);
  CFilterKernel(CFilterKernel const&) = delete;
  CFilterKernel& operator=(CFilterKernel const&) = delete;
  virtual ~CFilterKernel();

  // A table of this radius, of zeros; what was there is gone. 0 where `count` is more than the table holds. `clear`
  // tells that the caller counts on the zeros.
  int Create(int radius, int count, int clear);
  // Create, then the first `count` weights in table order, 0 standing for all and less for none. 0, and no weight,
  // where Create gives 0.
  int SetValues(int radius, float const* list, int count);
  int SetValues(int radius, double const* list, int count);

  // Null outside the table. Intended: only the place in the table is looked at, so that a dx beyond the radius goes on
  // into the next row.
  float* Address(int dx, int dy);
  float Value(int dx, int dy) const;  // by the same rule; 0.0 outside the table
  float ValueAt(int index) const;     // 0.0 outside the table

  // Divides each weight by the sum of all; a sum of exactly 0 leaves them as they are.
  void Normalize();

  // exp(-(dx^2 + dy^2) / (2 sigma^2)) / (2 pi sigma^2), normalized. sigma in pixels, not 0.
  int MakeGaussian(int radius, double sigma);
  // `weight` where dx^2 + dy^2 <= range, 1.0 at the centre, normalized.
  int MakeMean(int radius, double range, double weight);
  // Radius max(trunc(range), 1). -`weight` where dx^2 + dy^2 <= range, in n cells, and 2 n at the centre, normalized. A
  // weight of 2 sums to 0.
  int MakeSharp(double range, double weight);
  // -1.0 where dx^2 + dy^2 <= range, in n cells, and n at the centre: the sum is 0.
  int MakeEdge(int radius, double range);
  // 1.0 where dx^2 + dy^2 <= range^2. Returns the number of such cells, 0 on failure.
  int MakeDisk(int radius, double range);

  std::unique_ptr<float[]> values;
  int radius = 0;
  int size = 0;   // 2 radius + 1
  int count = 0;  // size squared
};
