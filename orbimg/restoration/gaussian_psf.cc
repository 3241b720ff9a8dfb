#include <cmath>
#include <cstddef>
#include <new>

#include <orbimg/restoration/gaussian_psf_internal.h>

namespace orb {

std::unique_ptr<float[]> MakeGaussianPsf(double sigma, int width, int height) {
  std::size_t const count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  std::unique_ptr<float[]> psf(new (std::nothrow) float[count]);
  if (psf == nullptr) return psf;
  double const cx = width * 0.5;
  double const cy = height * 0.5;
  double sum = 0.0;
  float* out = psf.get();
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      double const dx = x - cx;
      double const dy = y - cy;
      double const value = std::exp(-(dx * dx + dy * dy) / (2.0 * sigma * sigma)) / (sigma * sigma * 6.28318);
      *out++ = static_cast<float>(value);
      sum += value;
    }
  }
  for (std::size_t i = 0; i < count; ++i) psf[0] = static_cast<float>(psf[0] / sum);
  return psf;
}

}  // namespace orb
