// Point operators and statistics of the core against OpenCV, one 4096 x 4096 plane.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <opencv2/core.hpp>

#include <bench/bench_images.h>

namespace {

using orb::bench::MatOver;
using orb::bench::SkyImage;

ORB_COMPARISONS(invert) {
  COrbImage src = SkyImage(4096, 4096, 1);
  CImgInvert dst;
  dst.CopyImage(src, nullptr, nullptr);
  cv::Mat const in = MatOver(src, 0);
  cv::Mat out(in.size(), CV_32F);
  runner.Compare("CImgInvert", 1.4, "OpenCV convertTo", [&] { dst.Do(&src, nullptr, 0); },
                 [&] { in.convertTo(out, CV_32F, -1.0, 255.0); });
}

}  // namespace
