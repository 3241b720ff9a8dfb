#include <orbimg/restoration/wiener.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>

#include <orbimg/core/level.h>
#include <orbimg/restoration/fourier_plane.h>
#include <orbimg/restoration/wiener_kernels.h>
#include <orbimg/restoration/window_internal.h>

namespace {

constexpr int kMessage = 6104;
constexpr int kUnitsOfPlane = 100;
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

// The blur's spectrum and its largest power, and what is done to a plane with them.
class Filter {
 public:
  bool Create(int width, int height) { return image.Create(width, height) != 0 && blur.Create(width, height) != 0; }

  void MakeBlur(COrbImage& progress, double radius) {
    blur.FillGauss(radius * kSigmaOfRadius);
    progress.ShowProgress(5);
    blur.Transform(0);
    progress.ShowProgress(10);
    double least = 0.0;
    blur.GetPowerRange(&least, &largest);
    progress.ShowProgress(10);
  }

  void Apply(COrbImage& progress, COrbImage& working, int plane, double noise) {
    LoadPlane(&working, plane, image.data.data(), image.width, image.height);
    progress.ShowProgress(5);
    image.Transform(0);
    progress.ShowProgress(25);
    image.WienerDivide(&blur, largest * noise);
    progress.ShowProgress(25);
    image.Transform(1);
    progress.ShowProgress(25);
    StorePlane(&working, plane, image.data.data(), image.width);
    progress.ShowProgress(10);
  }

 private:
  CFourierPlane image;
  CFourierPlane blur;
  double largest = 0.0;
};

}  // namespace

int CImgWiener::Do(double radius, double noise, CRect* rect, int progress) {
  orb::Window const window = orb::WindowOf(*this, rect);
  std::unique_ptr<COrbImage> copy;
  if (!window.isWhole && window.IsValid()) copy = CopyWindow(*this, window);
  COrbImage* const working = window.isWhole ? this : copy.get();
  Filter filter;
  if (working == nullptr || !filter.Create(window.width, window.height)) {
    ShowProgressEnd(static_cast<char const*>(nullptr));
    return 0;
  }
  ShowProgressInit(progress, kMessage, planes * kUnitsOfPlane);
  filter.MakeBlur(*this, radius);
  // Intended: nothing asks whether ESC was pressed.
  for (int p = 0; p < planes; ++p) filter.Apply(*this, *working, p, noise);
  if (copy != nullptr) PixelBlt(window.left, window.top, window.width, window.height, copy.get(), 0, 0, 0);
  ShowProgressEnd(static_cast<char const*>(nullptr));
  return 1;
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
