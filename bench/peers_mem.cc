// The real transform and the convolution operator against scipy.fft, float32, one worker.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <string>
#include <vector>

#include <bench/bench_images.h>

namespace {

using orb::bench::Python;
using orb::bench::Runner;
using orb::bench::SkyImage;

constexpr char kSetUp[] = "import numpy, scipy.fft";

void CompareTransforms(Runner& runner, int log2, double limit) {
  int const side = 1 << log2;
  COrbImage image = SkyImage(side, side, 1);
  float* const samples = image.GetImageAdr(0, 0, 0, 0, nullptr);
  std::vector<float> spectrum(static_cast<std::size_t>(side) * static_cast<std::size_t>(side));
  RealFft fft;
  Python python(kSetUp);
  python.SetFloats("image", samples, {side, side});
  std::string const size = std::to_string(side);
  runner.Compare(
      "RealFft2 both ways " + size + " x " + size, limit, "scipy.fft rfft2, irfft2",
      [&] {
        fft.RealFft2(samples, spectrum.data(), log2, log2, 1);
        fft.RealFft2(samples, spectrum.data(), log2, log2, -1);
      },
      [&] { python.Run("back = scipy.fft.irfft2(scipy.fft.rfft2(image, workers=1), s=image.shape, workers=1)"); });
}

void CompareConvolutions(Runner& runner, int log2, double limit) {
  int const side = 1 << log2;
  std::size_t const count = static_cast<std::size_t>(side) * static_cast<std::size_t>(side);
  COrbImage image = SkyImage(side, side, 1);
  float* const samples = image.GetImageAdr(0, 0, 0, 0, nullptr);
  std::vector<float> store(2 * count);
  std::vector<float> out(count);
  std::vector<float> const kernel(63 * 63, 1.0f / (63 * 63));
  MemConvolve convolve;
  Python python(kSetUp);
  python.SetFloats("image", samples, {side, side});
  python.Run(
      "kernel = numpy.zeros(image.shape, numpy.float32)\n"
      "kernel[:63, :63] = 1.0 / (63 * 63)\n"
      "kernel = scipy.fft.rfft2(numpy.roll(kernel, (-31, -31), (0, 1)))");
  std::string const size = std::to_string(side);
  runner.Compare(
      "MemConvolve " + size + " x " + size, limit, "scipy.fft rfft2, product, irfft2",
      [&] {
        int mode = 1;
        convolve(out.data(), samples, kernel.data(), store.data(), side, side, 31, 31, &mode, nullptr, 0, 0);
      },
      [&] {
        python.Run("out = scipy.fft.irfft2(scipy.fft.rfft2(image, workers=1) * kernel, s=image.shape, workers=1)");
      });
}

ORB_COMPARISONS(realfft_1024) { CompareTransforms(runner, 10, 0.9); }
ORB_COMPARISONS(realfft_2048) { CompareTransforms(runner, 11, 0.9); }
ORB_COMPARISONS(realfft_4096) { CompareTransforms(runner, 12, 0.9); }
ORB_COMPARISONS(mem_convolve) { CompareConvolutions(runner, 11, 1.0); }

}  // namespace
