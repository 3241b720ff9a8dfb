// Discrete Fourier transforms by their definition, in double, and the radix 2 transform pass by pass.
#pragma once

#include <complex>
#include <vector>

namespace orb::test::reference {

using ComplexLine = std::vector<std::complex<double>>;

// sum over j of x[j] exp(sign 2 pi i j k/n) for every k.
ComplexLine DefinedTransform(ComplexLine const& x, int sign);

// The same on both axes of `ny` rows of `nx` values.
ComplexLine DefinedTransform2(ComplexLine const& plane, int nx, int ny, int sign);

struct FloatComplex {
  float re;
  float im;
};

// The table of n twiddles, and a unitary transform of a line of n = 2^m values.
std::vector<FloatComplex> Twiddles(int n);
std::vector<FloatComplex> RadixTwoLine(std::vector<FloatComplex> line, bool inverse);

// Rows, then columns, of `height` rows of `width` values as pairs.
std::vector<float> RadixTwoPlane(std::vector<float> data, int width, int height, bool inverse);

}  // namespace orb::test::reference
