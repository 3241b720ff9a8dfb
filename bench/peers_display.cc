// Rendering to bitmaps against OpenCV and Pillow, 4096 x 4096. Both sides free what they make.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <vector>

#include <opencv2/core.hpp>

#include <bench/bench_images.h>

namespace {

using orb::bench::MatOver;
using orb::bench::SkyImage;

constexpr int kSide = 4096;

void Render(COrbImage const& image, int bitCount) { orb::DibPtr const dib(image.GetDib(bitCount)); }

cv::Mat BytesOf(COrbImage const& image, int plane) {
  double const scale = 255.0 / image.GetLevelRange(plane);
  cv::Mat bytes;
  MatOver(image, plane).convertTo(bytes, CV_8U, scale, -image.GetLevelMin(plane) * scale);
  return bytes;
}

// The bytes of a colour image, red, green and blue of a pixel side by side, as Pillow keeps them.
std::vector<unsigned char> PixelsOf(COrbImage& image) {
  std::vector<unsigned char> pixels;
  pixels.reserve(static_cast<std::size_t>(image.GetPixelCount()));
  for (int y = 0; y < image.GetHeight(); ++y) {
    for (int x = 0; x < image.GetWidth(); ++x) {
      for (int p = 0; p < 3; ++p) pixels.push_back(image.GetPixelGray256(x, y, p));
    }
  }
  return pixels;
}

ORB_COMPARISONS(render_mono) {
  COrbImage const image = SkyImage(kSide, kSide, 1);
  runner.Compare(
      "GetDib(8), mono", 1.5, "OpenCV convertTo, flip", [&] { Render(image, 8); },
      [&] {
        cv::Mat flipped;
        cv::flip(BytesOf(image, 0), flipped, 0);
      });
}

ORB_COMPARISONS(render_color) {
  COrbImage const image = SkyImage(kSide, kSide, 3);
  runner.Compare(
      "GetDib(24), colour", 1.6, "OpenCV 3 x convertTo, merge, flip", [&] { Render(image, 24); },
      [&] {
        cv::Mat const planes[3] = {BytesOf(image, 2), BytesOf(image, 1), BytesOf(image, 0)};
        cv::Mat pixels;
        cv::Mat flipped;
        cv::merge(planes, 3, pixels);
        cv::flip(pixels, flipped, 0);
      });
}

ORB_COMPARISONS(render_palette) {
  COrbImage image = SkyImage(kSide, kSide, 3);
  std::vector<unsigned char> pixels = PixelsOf(image);
  orb::bench::Python python("from PIL import Image");
  python.SetBytes("pixels", pixels.data(), {kSide, kSide, 3});
  python.Run("picture = Image.fromarray(pixels)");
  runner.Compare(
      "GetDib(8), colour", 0.06, "Pillow median cut, 256 colours", [&] { Render(image, 8); },
      [&] { python.Run("picture.quantize(256, method=Image.MEDIANCUT)"); }, 3);
  runner.Compare(
      "GetDib(8), colour", 0.5, "Pillow fast octree, 256 colours", [&] { Render(image, 8); },
      [&] { python.Run("picture.quantize(256, method=Image.FASTOCTREE)"); }, 5);
}

}  // namespace
