// What the Wiener filter does with a plane: the blur, its powers, the division.
#include <algorithm>
#include <cstddef>

#include <orbimg/restoration/fourier_plane.h>
#include <orbimg/restoration/wiener_kernels.h>

// A quadrant is computed; the others mirror it, as the squares of the distances do.
void CFourierPlane::FillGauss(double s) {
  std::ptrdiff_t const stride = 2 * static_cast<std::ptrdiff_t>(width);
  std::vector<float> samples(static_cast<std::size_t>(width));
  for (int y = 0; y <= height / 2; ++y) {
    float* const row = data.data() + y * stride;
    std::fill_n(row, stride, 0.0f);
    if (orb::FillGaussRow(s, y, width, samples.data())) {
      for (std::ptrdiff_t x = 0; x < width; ++x) row[2 * x] = samples[static_cast<std::size_t>(x)];
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
