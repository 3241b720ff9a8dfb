#include <orbimg/restoration/mem.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <new>

#include <orbimg/core/operator_run.h>
#include <orbimg/core/truncate.h>
#include <orbimg/resources/message_table.h>
#include <orbimg/restoration/gaussian_psf_internal.h>
#include <orbimg/restoration/mem_progress_internal.h>
#include <orbimg/restoration/mem_solver.h>
#include <platform/large_pages_internal.h>

namespace {

constexpr int kPsfSize = 63;
constexpr int kNoMemoryMessage = 6150;
constexpr int kCancelledMessage = 6151;
constexpr unsigned kOkStyle = 0;
constexpr unsigned kInformationStyle = 64;
constexpr int kWorkArrays = 5;
constexpr std::ptrdiff_t kMostSamples = static_cast<std::ptrdiff_t>(1) << 56;

// When a plane counts as done: root mean square and largest step (raw units), change of the residual (of the noise).
constexpr double kLeastRmsStep = 0.5;
constexpr double kLeastMaxStep = 1.0;
constexpr double kLeastRmsResidual = 0.05;

enum Code { kEvenPsf = 1, kNoMemory = 7 };

using Floats = std::unique_ptr<float[]>;

Floats TryFloats(std::ptrdiff_t count) {
  Floats floats(new (std::nothrow) float[static_cast<std::size_t>(count)]);
  if (floats) orb::AskForLargePages(floats.get(), static_cast<std::size_t>(count) * sizeof(float));
  return floats;
}

// What a side is worked on as: the smallest power of two that holds it. 0 where an int holds none.
int PaddedSide(int side) {
  constexpr int kMost = 1 << 30;
  int padded = 1;
  while (padded < side && padded < kMost) padded *= 2;
  return padded < side ? 0 : padded;
}

// The window of an image. It may lie beyond the image on any side.
class Window {
 public:
  Window(COrbImage& image, CRect const* rect) : owner(image), area(AreaOf(image, rect)) {
    CRect const all(area.left, area.top, area.right, area.bottom);
    inside = orb::ClampRect(&all, image.GetWidth(), image.GetHeight());
  }

  int Width() const { return Span(area.left, area.right); }
  int Height() const { return Span(area.top, area.bottom); }
  bool IsEmpty() const { return area.IsEmpty(); }
  std::ptrdiff_t PlaneSize() const { return static_cast<std::ptrdiff_t>(Width()) * Height(); }

  // Plane after plane. Samples outside the image become 0.
  void Read(float* samples) const {
    std::fill_n(samples, PlaneSize() * owner.GetPlanes(), 0.0f);
    EachRowInside(1,
                  [&](float const* row, std::ptrdiff_t place) { std::copy_n(row, inside.Columns(), samples + place); });
  }
  void Write(float const* samples) const {
    EachRowInside(0, [&](float* row, std::ptrdiff_t place) { std::copy_n(samples + place, inside.Columns(), row); });
  }

 private:
  // Intended: a rectangle counts if it differs from the image in size, and only then.
  static orb::Bounds AreaOf(COrbImage const& image, CRect const* rect) {
    orb::Bounds const whole{0, 0, image.GetWidth(), image.GetHeight()};
    if (rect == nullptr) return whole;
    orb::Bounds const given{rect->left, rect->top, rect->right, rect->bottom};
    bool const isSameSize =
        Span(given.left, given.right) == whole.right && Span(given.top, given.bottom) == whole.bottom;
    return isSameSize ? whole : given;
  }

  // Held at the range of int.
  static int Span(int from, int to) { return orb::TruncateToInt(static_cast<double>(to) - from); }

  // Calls copy(row of the image from its first sample inside the window on, place of that sample in the window).
  template <typename Copy>
  void EachRowInside(unsigned flags, Copy copy) const {
    if (inside.IsEmpty()) return;
    for (int p = 0; p < owner.GetPlanes(); ++p) {
      for (int y = inside.top; y < inside.bottom; ++y) {
        std::ptrdiff_t const row = static_cast<std::ptrdiff_t>(y) - area.top;
        std::ptrdiff_t const column = static_cast<std::ptrdiff_t>(inside.left) - area.left;
        copy(owner.GetImageAdr(inside.left, y, p, flags, nullptr), p * PlaneSize() + row * Width() + column);
      }
    }
  }

  COrbImage& owner;
  orb::Bounds area;
  orb::Bounds inside;
};

// A plane in the middle of an array of the size that is worked on.
struct Margin {
  int w;
  int h;
  int nx;
  int ny;

  bool IsNone() const { return w == nx && h == ny; }
  std::ptrdiff_t PlaceOfRow(int y) const { return (static_cast<std::ptrdiff_t>(ny - h) / 2 + y) * nx + (nx - w) / 2; }
  void Put(float const* plane, float* padded) const {
    std::fill_n(padded, static_cast<std::ptrdiff_t>(nx) * ny, 0.0f);
    for (int y = 0; y < h; ++y) std::copy_n(plane + static_cast<std::ptrdiff_t>(y) * w, w, padded + PlaceOfRow(y));
  }
  void Take(float const* padded, float* plane) const {
    for (int y = 0; y < h; ++y) std::copy_n(padded + PlaceOfRow(y), w, plane + static_cast<std::ptrdiff_t>(y) * w);
  }
};

struct PointSpread {
  float const* values;
  int width;
  int height;
};

// Work space, then the solver. `in` and `out` have the size that is worked on.
int SolvePlane(float* in, float* out, Margin const& size, PointSpread const& psf, double variance, double* limits,
               COrbImage* progress, int planeNumber, MemConvolve& convolve) {
  std::ptrdiff_t const n = static_cast<std::ptrdiff_t>(size.nx) * size.ny;
  Floats const work = TryFloats(kWorkArrays * n);
  Floats const weight = TryFloats(n);
  Floats const kernelStore = TryFloats(2 * n);
  Floats const kernelWork = TryFloats(static_cast<std::ptrdiff_t>(psf.width) * psf.height);
  orb::MemProgress(progress, planeNumber).StartSetUp();
  if (!work || !weight || !kernelStore || !kernelWork) return kNoMemory;
  std::fill_n(weight.get(), n, 1.0f);  // the margin too: it is data of value 0
  return MemSolve(out, in, weight.get(), work.get(), psf.values, kernelWork.get(), std::ref(convolve),
                  kernelStore.get(), limits, variance, kWorkArrays, size.nx, size.ny, (psf.width - 1) / 2,
                  (psf.height - 1) / 2, 0, 0, progress, planeNumber);
}

int RestorePlane(float* in, float* out, Margin const& size, PointSpread const& psf, double variance, int iterations,
                 COrbImage* progress, int planeNumber) {
  MemConvolve convolve;
  double limits[] = {kLeastRmsStep, kLeastMaxStep, kLeastRmsResidual, static_cast<double>(iterations)};
  if (size.IsNone()) return SolvePlane(in, out, size, psf, variance, limits, progress, planeNumber, convolve);
  std::ptrdiff_t const n = static_cast<std::ptrdiff_t>(size.nx) * size.ny;
  Floats const padIn = TryFloats(n);
  Floats const padOut = TryFloats(n);
  if (!padIn || !padOut) return kNoMemory;
  size.Put(in, padIn.get());
  int const code = SolvePlane(padIn.get(), padOut.get(), size, psf, variance, limits, progress, planeNumber, convolve);
  if (code != kNoMemory) size.Take(padOut.get(), out);
  return code;
}

}  // namespace

int MemRestorePlane(float* in, float* out, int w, int h, float const* psf, int psfWidth, int psfHeight, double variance,
                    int iterations, COrbImage* progress, int planeNumber) {
  if (psfWidth % 2 == 0 || psfHeight % 2 == 0) return kEvenPsf;
  orb::MemProgress run(progress, planeNumber);
  run.StartPreparing();
  Margin const size{w, h, PaddedSide(w), PaddedSide(h)};
  int code = kNoMemory;
  try {
    if (size.nx > 0 && size.ny > 0) {
      code = RestorePlane(in, out, size, {psf, psfWidth, psfHeight}, variance, iterations, progress, planeNumber);
    }
  } catch (std::bad_alloc const&) {  // of the transform's tables
  }
  if (code == kNoMemory) run.End();
  return code;
}

float* CImgMem::MakeGauss(double sigma, int columns, int rows) {
  return orb::MakeGaussianPsf(sigma, columns, rows).release();
}

int CImgMem::Do(double sigma, double noise, int iterations, CRect* rect, int progress) {
  Window const window(*this, rect);
  COrbImage* const reporter = progress != 0 ? this : nullptr;
  int const firstNumber = planes > 1 ? 1 : 0;
  if (planes < 1 || window.IsEmpty()) {
    orb::MemProgress run(reporter, firstNumber);
    run.StartPreparing();
    run.End();
    return 1;
  }
  if (window.PlaneSize() > kMostSamples / planes) return 0;
  Floats const inPlanes = TryFloats(planes * window.PlaneSize());
  Floats const outPlanes = TryFloats(planes * window.PlaneSize());
  Floats const psf(MakeGauss(sigma, kPsfSize, kPsfSize));
  if (!inPlanes || !outPlanes || !psf) return 0;
  window.Read(inPlanes.get());
  for (int p = 0; p < planes; ++p) {
    std::ptrdiff_t const place = p * window.PlaneSize();
    int const code =
        MemRestorePlane(inPlanes.get() + place, outPlanes.get() + place, window.Width(), window.Height(), psf.get(),
                        kPsfSize, kPsfSize, noise * noise, iterations, reporter, firstNumber == 0 ? 0 : p + 1);
    if (!ShowOutcome(code)) return 0;
  }
  window.Write(outPlanes.get());
  return 1;
}

// Digits from the lowest up: 8 is ESC; 1 to 4 and 7 are failures; the rest make up good endings.
bool CImgMem::ShowOutcome(int code) {
  for (; code > 0; code /= 10) {
    int const digit = code % 10;
    bool const isFailure = (digit >= 1 && digit <= 4) || digit == 7;
    if (digit != 8 && !isFailure) continue;
    isFailure ? ShowMessageBox(kNoMemoryMessage, kOkStyle) : ShowMessageBox(kCancelledMessage, kInformationStyle);
    return false;
  }
  return true;
}
