// FftpackLine: complex transforms of lines of one length, by FFTPACK.
#pragma once

#include <vector>

#include <platform/export.h>

namespace orb {

// The work array of FFTPACK for lines of n points, and the calls on it. A transform writes to the array: one object
// serves one thread at a time; any number of them may be at work. Memory: 6 n doubles at most and a little. Lack of it
// is std::bad_alloc.
class ORBIMG_API FftpackLine {
 public:
  explicit FftpackLine(int n);

  int Length() const { return length; }
  // In place, n complex values as pairs of floats: sum over j of x[j] exp(-2 pi i j k/n), not scaled.
  void Forward(float* line);
  // The same with exp(+2 pi i j k/n).
  void Backward(float* line);

 private:
  using Transform = void (*)(int n, void* line, void* table);
  void Run(Transform transform, float* line);

  int length;
  std::vector<double> work;  // doubles for their alignment: the array holds floats and integers
};

}  // namespace orb
