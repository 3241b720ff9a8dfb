#include <orbimg/restoration/wiener.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>

#include <orbimg/core/level.h>
#include <orbimg/restoration/fourier_plane.h>
#include <orbimg/restoration/half_plane_internal.h>
#include <orbimg/restoration/wiener_kernels.h>
#include <orbimg/restoration/window_internal.h>

namespace {

constexpr int kMessage = 6104;
constexpr int kUnitsOfPlane = 100;
constexpr int kMostSide = 1 << 30;
// Intended: not 1/sqrt(2).
constexpr double kSigmaOfRadius = 0.707106781373095;

void MirrorRight(float* row, std::ptrdiff_t width, std::ptrdiff_t paddedWidth) {
  for (std::ptrdiff_t x = width; x < paddedWidth; ++x) {
    std::copy_n(row + 2 * std::max<std::ptrdiff_t>(2 * width - 1 - x, 0), 2, row + 2 * x);
  }
}

// A copy of the rectangle's samples, with the levels of the image. Null for lack of memory.
std::unique_ptr<COrbImage> CopyWindow(COrbImage& image, orb::Window const& window) {
  try {
    auto copy =
        std::make_unique<COrbImage>(-32, window.width, window.height, image.GetPlanes(), 1.0, 0.0, 1, nullptr, nullptr);
    for (int p = 0; p < image.GetPlanes(); ++p) copy->SetLevel(p, image.GetLevelMin(p), image.GetLevelMax(p));
    copy->PixelBlt(0, 0, window.width, window.height, &image, window.left, window.top, 0);
    return copy;
  } catch (std::exception const&) {
    return nullptr;
  }
}

int PaddedSide(int side) { return static_cast<int>(std::bit_ceil(static_cast<unsigned>(side))); }

// The blur's spectrum and its largest power, and what is done to a plane with them.
class WholeFilter {
 public:
  // False for lack of memory.
  bool Create(orb::Window const& window) {
    return image.Create(window.width, window.height) != 0 && blur.Create(window.width, window.height) != 0;
  }

  void MakeBlur(COrbImage& progress, double sigma, double noise) {
    blur.FillGauss(sigma);
    progress.ShowProgress(5);
    blur.Transform(0);
    progress.ShowProgress(10);
    double least = 0.0;
    double largest = 0.0;
    blur.GetPowerRange(&least, &largest);
    k = largest * noise;
    progress.ShowProgress(10);
  }

  void Apply(COrbImage& progress, COrbImage& working, int plane) {
    LoadPlane(&working, plane, image.data.data(), image.width, image.height);
    progress.ShowProgress(5);
    image.Transform(0);
    progress.ShowProgress(25);
    image.WienerDivide(&blur, k);
    progress.ShowProgress(25);
    image.Transform(1);
    progress.ShowProgress(25);
    StorePlane(&working, plane, image.data.data(), image.width);
    progress.ShowProgress(10);
  }

 private:
  CFourierPlane image;
  CFourierPlane blur;
  double k = 0.0;
};

// The same at half the work: the image is real, and so is the spectrum of the blur, which is even. What of the steps
// stands where does not show in the progress.
class HalfFilter {
 public:
  bool Create(orb::Window const& window) {
    width = PaddedSide(window.width);
    height = PaddedSide(window.height);
    try {
      plane = std::make_unique<orb::HalfPlane>(width, height);
      factors.Create(width, height);
      return true;
    } catch (std::exception const&) {  // of memory, or of the length of an array
      return false;
    }
  }

  void MakeBlur(COrbImage& progress, double sigma, double noise) {
    plane->TransformRows([&](std::ptrdiff_t y, float* row) {
      return orb::FillGaussRow(sigma, static_cast<double>(std::min(y, height - y)), width, row);
    });
    progress.ShowProgress(5);
    plane->TakeRealParts(factors);
    progress.ShowProgress(10);
    factors.ToWiener(noise);
    progress.ShowProgress(10);
  }

  void Apply(COrbImage& progress, COrbImage& working, int p) {
    orb::Level const level = orb::LevelOf(working, p);
    std::ptrdiff_t const w = working.GetWidth();
    std::ptrdiff_t const h = working.GetHeight();
    plane->TransformRows([&](std::ptrdiff_t y, float* row) {
      int const source = static_cast<int>(y < h ? y : 2 * h - 1 - y);
      orb::LoadRealRow(working.GetImageAdr(0, source, p, 1, nullptr), w, level, row);
      std::reverse_copy(row + 2 * w - width, row + w, row + w);
      return true;
    });
    progress.ShowProgress(5);
    progress.ShowProgress(25);
    plane->FilterColumns(factors);
    progress.ShowProgress(25);
    plane->TransformRowsBack(h, [&](std::ptrdiff_t y, float const* row) {
      // Intended: an address for reading, which is written through.
      orb::StoreRealRow(row, w, level, working.GetImageAdr(0, static_cast<int>(y), p, 1, nullptr));
    });
    progress.ShowProgress(25);
    progress.ShowProgress(10);
  }

 private:
  std::ptrdiff_t width = 0;
  std::ptrdiff_t height = 0;
  std::unique_ptr<orb::HalfPlane> plane;
  orb::SpectrumFactors factors;
};

// False for lack of memory.
template <typename Filter>
bool Restore(COrbImage& image, COrbImage& working, orb::Window const& window, double radius, double noise,
             int progress) {
  Filter filter;
  if (!filter.Create(window)) return false;
  image.ShowProgressInit(progress, kMessage, image.GetPlanes() * kUnitsOfPlane);
  filter.MakeBlur(image, radius * kSigmaOfRadius, noise);
  // Intended: nothing asks whether ESC was pressed.
  for (int p = 0; p < image.GetPlanes(); ++p) filter.Apply(image, working, p);
  return true;
}

}  // namespace

int CImgWiener::Do(double radius, double noise, CRect* rect, int progress) {
  orb::Window const window = orb::WindowOf(*this, rect);
  std::unique_ptr<COrbImage> copy;
  if (!window.isWhole && window.IsValid()) copy = CopyWindow(*this, window);
  COrbImage* const working = window.isWhole ? this : copy.get();
  bool isDone = false;
  if (working != nullptr && window.IsValid() && window.width <= kMostSide && window.height <= kMostSide) {
    isDone = orb::HalfPlane::Takes(PaddedSide(window.width), PaddedSide(window.height))
                 ? Restore<HalfFilter>(*this, *working, window, radius, noise, progress)
                 : Restore<WholeFilter>(*this, *working, window, radius, noise, progress);
  }
  if (isDone && copy != nullptr) {
    PixelBlt(window.left, window.top, window.width, window.height, copy.get(), 0, 0, 0);
  }
  ShowProgressEnd(static_cast<char const*>(nullptr));
  return isDone ? 1 : 0;
}

void LoadPlane(COrbImage* image, int plane, float* data, int paddedWidth, int paddedHeight) {
  std::ptrdiff_t const stride = 2 * static_cast<std::ptrdiff_t>(paddedWidth);
  std::ptrdiff_t const width = image->GetWidth();
  std::ptrdiff_t const height = image->GetHeight();
  orb::Level const level = orb::LevelOf(*image, plane);
  for (int y = 0; y < height; ++y) {
    float* const row = data + y * stride;
    orb::LoadWienerRow(image->GetImageAdr(0, y, plane, 1, nullptr), width, level, row);
    MirrorRight(row, width, paddedWidth);
  }
  for (std::ptrdiff_t y = height; y < paddedHeight; ++y) {
    std::copy_n(data + std::max<std::ptrdiff_t>(2 * height - 1 - y, 0) * stride, stride, data + y * stride);
  }
}

void StorePlane(COrbImage* image, int plane, float* data, int paddedWidth) {
  std::ptrdiff_t const stride = 2 * static_cast<std::ptrdiff_t>(paddedWidth);
  orb::Level const level = orb::LevelOf(*image, plane);
  for (int y = 0; y < image->GetHeight(); ++y) {
    // Intended: an address for reading, which is written through.
    orb::StoreWienerRow(data + y * stride, image->GetWidth(), level, image->GetImageAdr(0, y, plane, 1, nullptr));
  }
}
