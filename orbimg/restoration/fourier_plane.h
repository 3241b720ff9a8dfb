// CFourierPlane: a complex plane whose sides are powers of two, and its unitary transform.
//
//   Y[k] = (1/sqrt(n)) sum over j of X[j] exp(-2 pi i j k/n)      on each axis; + for the inverse
//
// so one direction undoes the other, and the sum of squares is kept. Radix 2: each butterfly is computed in double, and
// every pass stores floats. The error of a value, as a fraction of its magnitude and the root mean square of all
// together, is at most 6e-8 (1 + log2 of the number of values), where neither side is 2.
#pragma once

#include <vector>

#include <platform/export.h>

class ORBIMG_API CFourierPlane {
 public:
  struct Complex {
    float re;
    float im;
  };

  CFourierPlane() = default;
  CFourierPlane(CFourierPlane const&) = delete;
  CFourierPlane& operator=(CFourierPlane const&) = delete;
  virtual ~CFourierPlane();

  // The next powers of two from w and h on, filled with zeros. Returns 1; 0 for lack of memory, for sizes below 1 and
  // for those above 2^30, with `data` empty.
  int Create(int w, int h);

  // `data` in place, rows, then columns. `inverse`: 0 forward, 1 inverse. Scratch memory: a table and 34 lines of the
  // longer side. Intended: without memory for that, nothing is done and nothing said.
  void Transform(int inverse);

  // ---- Steps of Transform
  // w[k] = exp(-2 pi i k/n), from the cosines of the first quadrant. Makes room for max(n, 1) values if needed.
  // Intended: for n = 2 the table holds (1, -1) and (-1, 1), which shows in a result two columns wide.
  void MakeTwiddles(int n);
  // exp(-2 pi i k/m), out of the table for n points.
  Complex GetTwiddle(int m, int k, int n) const;
  // The n = 2^log2n values in lineA, as pairs, to lineA or lineB, both with room for n values; returns which.
  float* TransformLine(int n, int log2n, int inverse);

  // ---- What the Wiener filter does with a plane (fourier_plane_wiener.cc)
  // A gaussian of sigma s [pixels] about the origin, wrapped at the edges: 159.15507752443827 exp(-r r/(2 s s)).
  // Intended: not normalised.
  void FillGauss(double s);
  // The smallest and the largest re re + im im, as floats. The first value sets both, also where it is not a number;
  // others that are not are passed over.
  void GetPowerRange(double* min, double* max) const;
  // Y = Y conj(B)/(|B| |B| + k), with B of `blur`, which has the size of this plane. Nothing guards against a divisor
  // of 0.
  void WienerDivide(CFourierPlane const* blur, double k);

  int width = 0;
  int log2Width = 0;
  int height = 0;
  int log2Height = 0;
  std::vector<float> data;  // pairs, rows one after the other

  std::vector<float> lineA;  // these three are alive only during Transform
  std::vector<float> lineB;
  std::vector<float> twiddles;

 private:
  void TransformRows(int inverse, float* block);
  void TransformColumns(int inverse, float* block);
};
