// The real two-dimensional Fourier transform for power-of-two sizes, with a spectrum that takes no more floats than the
// image.
//
// A line of n = 2^m samples x, with h = n/2, becomes n floats y:
//
//   y[k]     = (1/sqrt(n)) sum over t of x[t] cos(2 pi k t/n)   for k = 0 .. h
//   y[h + k] = (1/sqrt(n)) sum over t of x[t] sin(2 pi k t/n)   for k = 1 .. h - 1
//
// that is, the transform with kernel exp(+2 pi i k t/n): real parts in the lower half with the two purely real terms at
// 0 and h, imaginary parts in the upper half. Both directions multiply by 1/sqrt(n), so one undoes the other.
//
// The algorithm is the self-sorting one of radix 2, two of its passes taken at once. Arithmetic is in floats: each sum
// and product is rounded, whatever the number of lines that run side by side, so that a line alone, a line among others
// and every machine give the same bits. No sample of a result is further from the exact one than 6 x 10^-7 times the
// logarithm (to the base 2) of the number of points, in units of the root mean square of the exact samples.
#pragma once

#include <cstddef>
#include <vector>

#include <platform/export.h>

// 2^e; 1 for e = 0. `e` is 0 to 30.
ORBIMG_API int IntPow2(int e);

// The state of one run of transforms: the tables of the line length in use and the line buffers. Objects are
// independent of one another. Scratch memory: two blocks of 32 lines of the longer axis.
class ORBIMG_API RealFft {
 public:
  RealFft() = default;
  RealFft(RealFft const&) = delete;
  RealFft& operator=(RealFft const&) = delete;

  // Tables and buffers for lines of 2^m samples. m = -1 does nothing.
  void RealFftSetup(int m);
  // One line into the buffer, each sample multiplied by 1/sqrt(n); the samples lie `stride` floats apart.
  void LoadLine(float const* samples, std::ptrdiff_t stride);
  // From the loaded line to the result.
  void RealFftForward();
  void RealFftInverse();
  void StoreLine(float* samples, std::ptrdiff_t stride) const;

  // An image of 2^log2x columns and 2^log2y rows. `direction` 1 or more transforms every row of `image`, then every
  // column, into `spectrum`; a negative one transforms the columns of `spectrum`, then the rows, into `image`. Both may
  // be the same array. Negative logarithms and direction 0 do nothing.
  void RealFft2(float* image, float* spectrum, int log2x, int log2y, int direction);

 private:
  void SetLine(int m, int lanes);
  void Transform(int direction, int lanes);
  void TransformLine(float const* from, float* to, int direction);
  void TransformRows(float const* from, float* to, int log2x, std::ptrdiff_t rows, int direction);
  void TransformColumns(float const* from, float* to, int log2y, std::ptrdiff_t columns, int direction);

  int lineLog2 = -1;
  std::ptrdiff_t lineLength = 0;
  double lineNorm = 1.0;
  std::vector<float> cosTable;  // entry j is the cosine of 2 pi j/n, for j = 0 .. n/4
  std::vector<float> sinTable;
  std::vector<float> area;
  float* source = nullptr;
  float* target = nullptr;
  float* resultBuffer = nullptr;
};
