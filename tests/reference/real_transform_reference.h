// The real transform, its packed spectra and the convolution operator, line by line and sample by sample.
#pragma once

#include <vector>

namespace orb::test::reference {

// A line of n = 2^m samples, with every intermediate value held as a Real: float rounds each sum and product as the
// library does, double only what is stored in the line.
template <typename Real>
std::vector<float> TransformLine(std::vector<float> const& line, int direction);

template <typename Real>
std::vector<float> Transform2(std::vector<float> const& from, int log2x, int log2y, int direction);

std::vector<float> PackSpectrum(std::vector<float> const& form, int log2x, int log2y, int direction);

// Through complex numbers, one frequency at a time.
std::vector<float> MultiplySpectra(std::vector<float> const& a, std::vector<float> const& b, int log2x, int log2y,
                                   int direction);

std::vector<float> WrapKernel(std::vector<float> const& kernel, int halfX, int halfY, int nx, int ny);

// The packed line spectrum by its definition.
std::vector<double> LineSpectrum(std::vector<double> const& line);

// Circular convolution (direction 1) or correlation (-1) by its definition.
std::vector<double> ConvolveByDefinition(std::vector<float> const& in, std::vector<float> const& kernel, int halfX,
                                         int halfY, int nx, int ny, int direction);

}  // namespace orb::test::reference
