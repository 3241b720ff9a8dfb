// The composite against OpenCV's bilinear warp followed by a weighted sum, one 4096 x 4096 plane.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <bench/bench_images.h>

namespace {

using orb::bench::MatOver;
using orb::bench::SkyImage;

// Averages two skies, the second at (x - dx, y - dy) turned by `degrees` about the centre; the peer's map is the same.
void CompareAverage(orb::bench::Runner& runner, char const* name, double limit, double dx, double dy, double degrees) {
  COrbImage first = SkyImage(4096, 4096, 1, 1);
  COrbImage second = SkyImage(4096, 4096, 1, 2);
  second.SetStdCtr(2048, 2048);
  CImgComposit dst;
  dst.CopyImage(first, nullptr, nullptr);
  cv::Mat const a = MatOver(first, 0);
  cv::Mat const b = MatOver(second, 0);
  cv::Mat warped(a.size(), CV_32F);
  cv::Mat sum(a.size(), CV_32F);
  double const radians = degrees * orb::kRadiansPerDegree;
  double const s = std::sin(radians);
  double const c = std::cos(radians);
  // sx = c (x - 2048 - dx) - s (2048 - y + dy) + 2048, sy = 2048 - s (x - 2048 - dx) - c (2048 - y + dy)
  cv::Mat const map = (cv::Mat_<double>(2, 3) << c, s, -c * (2048 + dx) - s * (2048 + dy) + 2048,  //
                       -s, c, 2048 + s * (2048 + dx) - c * (2048 + dy));
  runner.Compare(
      name, limit, "OpenCV warpAffine and addWeighted", [&] { dst.Do(&first, &second, dx, dy, degrees, 0, 0); },
      [&] {
        cv::warpAffine(b, warped, map, b.size(), cv::INTER_LINEAR | cv::WARP_INVERSE_MAP, cv::BORDER_CONSTANT, 0.0);
        cv::addWeighted(a, 0.5, warped, 0.5, 0.0, sum);
      });
}

ORB_COMPARISONS(composite_shift) {
  CompareAverage(runner, "CImgComposit average, fractional shift", 0.5, 7.3, -4.6, 0.0);
}

ORB_COMPARISONS(composite_rotation) { CompareAverage(runner, "CImgComposit average, 3 degrees", 0.9, 7.3, -4.6, 3.0); }

}  // namespace
