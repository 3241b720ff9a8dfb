// The point-spread function of the iterative restorations.
#pragma once

#include <memory>

namespace orb {

// value (x, y) = exp(-((x - width/2)^2 + (y - height/2)^2)/(2 sigma^2))/(sigma^2 6.28318), sigma in pixels. Null for
// lack of memory. Intended: not 2 pi, and only the first element is normalised: it is divided by the sum of all, once
// for each element.
std::unique_ptr<float[]> MakeGaussianPsf(double sigma, int width, int height);

}  // namespace orb
