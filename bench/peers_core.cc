// Point operators and statistics of the core against OpenCV, one 4096 x 4096 plane.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

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
  runner.Compare(
      "CImgInvert", 1.4, "OpenCV convertTo", [&] { dst.Do(&src, nullptr, 0); },
      [&] { in.convertTo(out, CV_32F, -1.0, 255.0); });
}

// In place on our side; whatever the samples become, the work stays the same.
ORB_COMPARISONS(calibration) {
  COrbImage raw = SkyImage(4096, 4096, 1, 2);
  COrbImage frame = SkyImage(4096, 4096, 1, 3);
  cv::Mat const in = MatOver(raw, 0).clone();
  cv::Mat const calibration = MatOver(frame, 0);
  cv::Mat out(in.size(), CV_32F);
  runner.Compare(
      "COrbImage::DarkClbrtn", 0.9, "OpenCV subtract, threshold to zero", [&] { raw.DarkClbrtn(&frame, 0); },
      [&] {
        cv::subtract(in, calibration, out);
        cv::threshold(out, out, 0.0, 0.0, cv::THRESH_TOZERO);
      });
  raw = SkyImage(4096, 4096, 1, 2);
  runner.Compare(
      "COrbImage::FlatClbrtn with its mean", 1.0, "OpenCV mean, divide", [&] { raw.FlatClbrtn(&frame, 0); },
      [&] { cv::divide(in, calibration, out, cv::mean(calibration)[0]); });
}

ORB_COMPARISONS(statistics) {
  constexpr int kClasses = 5000;
  COrbImage image = SkyImage(4096, 4096, 1);
  cv::Mat const plane = MatOver(image, 0);
  std::vector<int> hist(kClasses);
  cv::Mat counts;
  double min = 0.0;
  double max = 0.0;
  auto const countTheirs = [&] {
    cv::minMaxLoc(plane, &min, &max);
    float const bounds[] = {static_cast<float>(min), static_cast<float>(max)};
    float const* ranges[] = {bounds};
    int const channel = 0;
    cv::calcHist(&plane, 1, &channel, cv::Mat(), counts, 1, &kClasses, ranges);
  };
  runner.Compare(
      "COrbImage::CalcMinMax", 0.4, "OpenCV minMaxLoc", [&] { image.CalcMinMax(); },
      [&] { cv::minMaxLoc(plane, &min, &max); });
  runner.Compare(
      "CalcMinMax, GetHistGram of 5000 classes", 0.6, "OpenCV minMaxLoc, calcHist",
      [&] {
        image.CalcMinMax();
        image.GetHistGram(hist.data(), kClasses, image.GetMinPixel(0), image.GetMaxPixel(0), 0, nullptr, 0, 0);
      },
      countTheirs);
}

}  // namespace
