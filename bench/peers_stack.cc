// Median stack and image matching against array libraries, frames of 4096 x 4096.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <opencv2/imgproc.hpp>

#include <bench/bench_images.h>

namespace {

using orb::bench::MatOver;
using orb::bench::SkyImage;

constexpr int kSize = 4096;

// The template lacks 16 pixels on each side, so that it fits at 33 x 33 places: the shifts that a range of 32 spans.
ORB_COMPARISONS(matching_whole) {
  CImgMatching reference;
  reference.CopyImage(SkyImage(kSize, kSize, 1, 1), nullptr, nullptr);
  COrbImage source = SkyImage(kSize, kSize, 1, 2);
  cv::Mat const image = MatOver(reference, 0);
  cv::Mat const part = MatOver(source, 0)(cv::Rect(16, 16, kSize - 32, kSize - 32));
  cv::Mat differences;
  runner.Compare(
      "CImgMatching, range 32, 289 + 8 whole shifts", 0.5, "OpenCV matchTemplate SQDIFF, 33 x 33 shifts",
      [&] {
        double x = 0.0;
        double y = 0.0;
        reference.Do(&source, &x, &y, 32, 0, 0);
      },
      [&] { cv::matchTemplate(image, part, differences, cv::TM_SQDIFF); }, 5);
}

}  // namespace
