#include <orbimg/restoration/mem_convolve.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>

#include <orbimg/core/orb_image.h>
#include <orbimg/core/row_kernel.h>
#include <orbimg/restoration/packed_spectrum.h>

namespace {

enum Mode { kConvolve = 1, kCorrelate = 2, kConvolveOneOff = 3 };
enum Status { kDone = 0, kBadCall = 1, kCancelled = 8 };

// Six positions between two percentages; 0 on ESC.
class Steps {
 public:
  Steps(COrbImage* image, int percentFrom, int percentTo)
      : progress(image), from(percentFrom), step((percentTo - percentFrom) / 6) {}

  bool Show(int i) { return progress == nullptr || progress->ShowProgress(from + i * step) != 0; }

 private:
  COrbImage* progress;
  int from;
  int step;
};

ORB_ROW_KERNEL void Scale(float* values, std::ptrdiff_t count, double factor) {
  ORB_COLUMNS_INDEPENDENT
  for (std::ptrdiff_t i = 0; i < count; ++i) values[i] = static_cast<float>(values[i] * factor);
}

bool IsPowerOfTwo(int n) { return n > 0 && std::has_single_bit(static_cast<unsigned>(n)); }

int Log2(int n) { return std::bit_width(static_cast<unsigned>(n)) - 1; }

// i mod n, not negative.
int Wrapped(int i, int n) { return i % n < 0 ? i % n + n : i % n; }

}  // namespace

void KernelWrap(float const* kernel, float* target, int halfX, int halfY, int nx, int ny) {
  std::fill_n(target, static_cast<std::ptrdiff_t>(nx) * ny, 0.0f);
  for (int v = -halfY; v <= halfY; ++v) {
    float* const row = target + static_cast<std::ptrdiff_t>(Wrapped(v, ny)) * nx;
    for (int u = -halfX; u <= halfX; ++u) row[Wrapped(u, nx)] = *kernel++;
  }
}

void MemConvolve::Reset() {
  isStarted = isOneOffReady = isMainReady = false;
  log2x = log2y = -1;
}

// The first call of a run. False where the size is no power of two.
bool MemConvolve::Start(int nx, int ny, int mode) {
  if (!IsPowerOfTwo(nx) || !IsPowerOfTwo(ny)) return false;
  log2x = Log2(nx);
  log2y = Log2(ny);
  isStarted = true;
  isOneOffReady = mode != kConvolveOneOff;
  return true;
}

// The transform is unitary: the factor sqrt(nx ny) in the kernel's spectrum makes the product of two spectra that of a
// convolution.
void MemConvolve::TransformKernel(float const* kernel, float* store, int nx, int ny, int halfX, int halfY) {
  KernelWrap(kernel, store, halfX, halfY, nx, ny);
  fft.RealFft2(store, store, log2x, log2y, 1);
  SpectrumPack(store, log2x, log2y, 1);
  std::ptrdiff_t const count = static_cast<std::ptrdiff_t>(nx) * ny;
  Scale(store, count, std::sqrt(static_cast<double>(static_cast<float>(count))));
}

void MemConvolve::operator()(float* out, float const* in, float const* kernel, float* store, int nx, int ny, int halfX,
                             int halfY, int* mode, COrbImage* progress, int percentFrom, int percentTo) {
  int const task = *mode;
  *mode = kDone;
  if (task < 0) return Reset();
  if (task < kConvolve || task > kConvolveOneOff || (!isStarted && !Start(nx, ny, task))) {
    *mode = kBadCall;
    return;
  }
  if (!isMainReady || !isOneOffReady) {
    TransformKernel(kernel, store, nx, ny, halfX, halfY);
    (isOneOffReady ? isMainReady : isOneOffReady) = true;
  }
  float* const spectrum = store + static_cast<std::ptrdiff_t>(nx) * ny;
  Steps steps(progress, percentFrom, percentTo);
  *mode = kCancelled;
  if (!steps.Show(1)) return;
  fft.RealFft2(const_cast<float*>(in), spectrum, log2x, log2y, 1);  // forward only reads its first argument
  if (!steps.Show(2)) return;
  SpectrumPack(spectrum, log2x, log2y, 1);
  if (!steps.Show(3)) return;
  SpectrumMultiply(spectrum, spectrum, store, log2x, log2y, task == kCorrelate ? -1 : 1);
  if (!steps.Show(4)) return;
  SpectrumPack(spectrum, log2x, log2y, -1);
  if (!steps.Show(5)) return;
  fft.RealFft2(out, spectrum, log2x, log2y, -1);
  if (!steps.Show(6)) return;
  *mode = kDone;
}
