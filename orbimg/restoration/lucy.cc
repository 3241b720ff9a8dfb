#include <orbimg/restoration/lucy.h>

#include <algorithm>
#include <cstddef>
#include <exception>
#include <memory>
#include <new>
#include <vector>

#include <orbimg/restoration/gaussian_psf_internal.h>
#include <orbimg/restoration/lucy_iteration_internal.h>
#include <orbimg/restoration/window_internal.h>

namespace {

constexpr int kNoMemoryMessage = 6148;
constexpr int kCancelledMessage = 6149;
constexpr unsigned kPlainBox = 0;
constexpr unsigned kInformationBox = 64;
constexpr int kPsfSide = 64;
constexpr double kChiLimit = 1.0;
constexpr double kRejection = 5.0;

// The rows of a window that lie in the image: row(image row's part, window row's part, columns).
template <typename Row>
void EachRowInside(COrbImage& image, orb::Window const& window, unsigned mode, std::vector<float>& samples, Row row) {
  std::int64_t const left = std::max(window.left, 0);
  std::int64_t const right =
      std::min<std::int64_t>(static_cast<std::int64_t>(window.left) + window.width, image.GetWidth());
  std::int64_t const bottom =
      std::min<std::int64_t>(static_cast<std::int64_t>(window.top) + window.height, image.GetHeight());
  if (left >= right) return;
  for (int p = 0; p < image.GetPlanes(); ++p) {
    for (std::int64_t y = std::max(window.top, 0); y < bottom; ++y) {
      std::ptrdiff_t const line = static_cast<std::ptrdiff_t>(p) * window.height + (y - window.top);
      row(image.GetImageAdr(static_cast<int>(left), static_cast<int>(y), p, mode, nullptr),
          samples.data() + line * window.width + (left - window.left), right - left);
    }
  }
}

}  // namespace

int CImgLucy::Do(double sigma, double adu, double noise, int iterations, CRect* rect, int progress) {
  orb::Window const window = orb::WindowOf(*this, rect);
  if (!window.IsValid()) return 0;
  std::vector<float> samples;
  std::unique_ptr<float[]> psf;
  std::size_t const pixels = static_cast<std::size_t>(window.width) * static_cast<std::size_t>(window.height);
  try {
    samples.assign(static_cast<std::size_t>(planes) * pixels, 0.0f);
    psf.reset(MakeGauss(sigma, kPsfSide, kPsfSide));
    if (psf == nullptr) throw std::bad_alloc();
  } catch (std::exception const&) {  // of memory, or of the length of an array
    return 0;
  }
  EachRowInside(*this, window, 1, samples, [](float* in, float* out, std::ptrdiff_t n) { std::copy_n(in, n, out); });
  for (int p = 0; p < planes; ++p) {
    int const code =
        orb::LucyRestorePlane(samples.data() + static_cast<std::size_t>(p) * pixels, window.width, window.height,
                              psf.get(), kPsfSide, kPsfSide, nullptr, iterations, adu, noise, kChiLimit, kRejection,
                              progress != 0 ? this : nullptr, planes > 1 ? p + 1 : 0);
    if (code == orb::kLucyDone) continue;
    if (code == orb::kLucyNoMemory) {
      ShowMessageBox(kNoMemoryMessage, kPlainBox);
    } else {
      ShowMessageBox(kCancelledMessage, kInformationBox);
    }
    return 0;
  }
  EachRowInside(*this, window, 0, samples, [](float* out, float* in, std::ptrdiff_t n) { std::copy_n(in, n, out); });
  return 1;
}

float* CImgLucy::MakeGauss(double sigma, int psfWidth, int psfHeight) {
  return orb::MakeGaussianPsf(sigma, psfWidth, psfHeight).release();
}
