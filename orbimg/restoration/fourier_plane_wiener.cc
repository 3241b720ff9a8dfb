// What the Wiener filter does with a plane: the blur, its powers, the division.
#include <algorithm>
#include <cmath>
#include <cstddef>

#include <orbimg/restoration/fourier_plane.h>
#include <orbimg/restoration/wiener_kernels.h>

namespace {

constexpr double kPeak = 159.15507752443827;

// Where the exponent is below this, the product with the peak is 0 as a float, and exp need not be asked.
constexpr double kVanishing = -120.0;

}  // namespace

// A quadrant is computed; the others mirror it, as the squares of the distances do.
void CFourierPlane::FillGauss(double s) {
  std::ptrdiff_t const stride = 2 * static_cast<std::ptrdiff_t>(width);
  for (int y = 0; y <= height / 2; ++y) {
    float* const row = data.data() + y * stride;
    std::fill_n(row, stride, 0.0f);
    double const dy = y;
    for (int x = 0; x <= width / 2; ++x) {
      double const dx = x;
      double const exponent = -(dx * dx + dy * dy) / (2.0 * s * s);
      float const value = exponent < kVanishing ? 0.0f : static_cast<float>(kPeak * std::exp(exponent));
      row[2 * static_cast<std::ptrdiff_t>(x)] = value;
      if (x > 0) row[stride - 2 * static_cast<std::ptrdiff_t>(x)] = value;
    }
    if (y > 0 && y < height - y) std::copy_n(row, stride, data.data() + (height - y) * stride);
  }
}

void CFourierPlane::GetPowerRange(double* min, double* max) const {
  orb::PowerRange const range =
      orb::FindPowerRange(data.data(), static_cast<std::ptrdiff_t>(width) * static_cast<std::ptrdiff_t>(height));
  *min = range.least;
  *max = range.most;
}

void CFourierPlane::WienerDivide(CFourierPlane const* blur, double k) {
  std::ptrdiff_t const stride = 2 * static_cast<std::ptrdiff_t>(width);
  for (std::ptrdiff_t y = 0; y < height; ++y) {
    orb::WienerDivideRow(data.data() + y * stride, blur->data.data() + y * stride, width, k);
  }
}
