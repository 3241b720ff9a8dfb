// Restorations and their Fourier engines against scipy and scikit-image, on one worker.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <algorithm>
#include <string>
#include <vector>

#include <bench/bench_images.h>

namespace {

using orb::bench::Python;
using orb::bench::SkyImage;

// One plane of sky as floats.
std::vector<float> SkySamples(int width, int height) {
  COrbImage const sky = SkyImage(width, height, 1);
  float const* const samples = sky.GetImageAdr(0, 0, 0, 1, nullptr);
  return {samples, samples + sky.GetPixelCount()};
}

std::string SizeText(int width, int height) { return std::to_string(width) + " x " + std::to_string(height); }

void CompareFft2(orb::bench::Runner& runner, int nx, int ny, double limit) {
  // Arrays of images: they lie in large pages, as large arrays of numpy do.
  COrbImage sky = SkyImage(nx, ny, 1);
  COrbImage spectra(-32, 2 * nx, ny, 1, 1.0, 0.0, 1, nullptr, nullptr);
  COrbImage restored(-32, nx, ny, 1, 1.0, 0.0, 1, nullptr, nullptr);
  float* const image = sky.GetImageAdr(0, 0, 0, 0, nullptr);
  float* const spectrum = spectra.GetImageAdr(0, 0, 0, 0, nullptr);
  float* const back = restored.GetImageAdr(0, 0, 0, 0, nullptr);
  Python python("import scipy.fft");
  python.SetFloats("image", image, {ny, nx});
  python.Run("pairs = image.astype(numpy.complex64)");
  runner.Compare(
      "Fft2Forward, Fft2Inverse " + SizeText(nx, ny), limit, "scipy.fft fft2, ifft2",
      [&] {
        FftTables tables(nx, ny);
        Fft2Forward(&tables, image, spectrum, nx, ny, nullptr, 0, 50);
        Fft2Inverse(&tables, spectrum, back, nx, ny, nullptr, 50, 100);
      },
      [&] { python.Run("back = scipy.fft.ifft2(scipy.fft.fft2(pairs, workers=1), workers=1)"); }, 5);
}

ORB_COMPARISONS(fourier_any_length) {
  CompareFft2(runner, 2048, 2048, 0.9);
  CompareFft2(runner, 3000, 2000, 1.1);
}

void CompareFourierPlane(orb::bench::Runner& runner, int side) {
  CFourierPlane plane;
  plane.Create(side, side);
  std::vector<float> const image = SkySamples(side, side);
  for (std::size_t i = 0; i < image.size(); ++i) plane.data[2 * i] = image[i];
  std::vector<float> pairs(plane.data);
  Python python("import scipy.fft");
  python.SetFloats("floats", pairs.data(), {side, side, 2});
  python.Run("pairs = floats.view(numpy.complex64)[:, :, 0]");
  runner.Compare(
      "CFourierPlane both ways " + SizeText(side, side), 0.9, "scipy.fft fft2, ifft2",
      [&] {
        plane.Transform(0);
        plane.Transform(1);
      },
      [&] { python.Run("back = scipy.fft.ifft2(scipy.fft.fft2(pairs, workers=1), workers=1)"); }, 5);
}

ORB_COMPARISONS(fourier_plane) {
  CompareFourierPlane(runner, 1024);
  CompareFourierPlane(runner, 2048);
  CompareFourierPlane(runner, 4096);
}

void CompareWiener(orb::bench::Runner& runner, int side) {
  CImgWiener image;
  image.CopyImage(SkyImage(side, side, 1), nullptr, nullptr);
  std::vector<float> samples = SkySamples(side, side);
  Python python("import skimage.restoration");
  python.SetFloats("image", samples.data(), {side, side});
  python.Run(
      "axis = numpy.arange(-16, 17)\n"
      "psf = numpy.exp(-(axis[:, None]**2 + axis[None, :]**2) / 4.0).astype(numpy.float32)\n"
      "psf /= psf.sum()");
  runner.Compare(
      "CImgWiener " + SizeText(side, side), 0.7, "skimage.restoration.wiener", [&] { image.Do(2.0, 0.01, nullptr, 0); },
      [&] { python.Run("out = skimage.restoration.wiener(image, psf, 0.01, clip=False)"); }, 3);
}

ORB_COMPARISONS(wiener) {
  CompareWiener(runner, 2048);
  CompareWiener(runner, 4096);
}

// Preparations do not count. The peer is the textbook iteration with a gaussian of 65 x 65.
void CompareLucy(orb::bench::Runner& runner, int side) {
  COrbImage const sky = SkyImage(side, side, 1);
  std::vector<float> samples = SkySamples(side, side);
  for (float& v : samples) v /= 65536.0f;
  Python python("import skimage.restoration");
  python.SetFloats("image", samples.data(), {side, side});
  python.Run(
      "axis = numpy.arange(-32, 33)\n"
      "psf = numpy.exp(-(axis[:, None]**2 + axis[None, :]**2) / 4.5).astype(numpy.float32)\n"
      "psf /= psf.sum()");
  auto const ours = [&](int iterations) {
    CImgLucy image;
    image.CopyImage(sky, nullptr, nullptr);
    image.Do(1.5, 1.0, 0.1, iterations, nullptr, 0);
  };
  auto const theirs = [&](int iterations) {
    python.Run("out = skimage.restoration.richardson_lucy(image, psf, num_iter=" + std::to_string(iterations) +
               ", clip=False)");
  };
  runner.CompareIterations("CImgLucy iteration " + SizeText(side, side), 1.2, "skimage richardson_lucy iteration", ours,
                           theirs);
}

ORB_COMPARISONS(lucy) {
  CompareLucy(runner, 1024);
  CompareLucy(runner, 2048);
}

}  // namespace
