// Sampling anew and the map of a planet against OpenCV, 4096 x 4096. Both sides make their result's memory anew, as the
// operators do in every call.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>
#include <orbmath/direction.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <bench/bench_images.h>

namespace {

using orb::bench::MatOver;
using orb::bench::SkyImage;

constexpr int kSide = 4096;

void CompareResolution(orb::bench::Runner& runner, std::string const& work, double limit, std::string const& peer,
                       int (CImgResolution::*operation)(COrbImage*, int, int, int), int side, int interpolation) {
  COrbImage src = SkyImage(kSide, kSide, 1);
  cv::Mat const in = MatOver(src, 0);
  runner.Compare(
      work, limit, peer,
      [&] {
        CImgResolution dst;
        dst.Create(src, nullptr, nullptr);
        (dst.*operation)(&src, side, side, 0);
      },
      [&] {
        cv::Mat out;
        cv::resize(in, out, cv::Size(side, side), 0.0, 0.0, interpolation);
      });
}

ORB_COMPARISONS(resample_linear_double) {
  CompareResolution(runner, "CImgResolution::ByLinear to double", 0.8, "OpenCV resize, bilinear",
                    &CImgResolution::ByLinear, 2 * kSide, cv::INTER_LINEAR);
}

ORB_COMPARISONS(resample_linear_half) {
  CompareResolution(runner, "CImgResolution::ByLinear to half", 1.5, "OpenCV resize, bilinear",
                    &CImgResolution::ByLinear, kSide / 2, cv::INTER_LINEAR);
}

ORB_COMPARISONS(resample_cubic_double) {
  CompareResolution(runner, "CImgResolution::ByCubic to double", 2.0, "OpenCV resize, cubic", &CImgResolution::ByCubic,
                    2 * kSide, cv::INTER_CUBIC);
}

ORB_COMPARISONS(resample_cubic_half) {
  CompareResolution(runner, "CImgResolution::ByCubic to half", 2.0, "OpenCV resize, cubic", &CImgResolution::ByCubic,
                    kSide / 2, cv::INTER_CUBIC);
}

ORB_COMPARISONS(resample_cubic_1500) {
  CompareResolution(runner, "CImgResolution::ByCubic to 1500 x 1500", 2.0, "OpenCV resize, cubic",
                    &CImgResolution::ByCubic, 1500, cv::INTER_CUBIC);
}

ORB_COMPARISONS(resample_canvas) {
  COrbImage src = SkyImage(kSide, kSide, 1);
  cv::Mat const in = MatOver(src, 0);
  float fill[] = {0.0f};
  runner.Compare(
      "CImgResize to 4608 x 4608", 1.5, "OpenCV copyMakeBorder",
      [&] {
        CImgResize dst;
        dst.Create(src, nullptr, nullptr);
        dst.Do(kSide + 512, kSide + 512, 4, fill, &src, 0);
      },
      [&] {
        cv::Mat out;
        cv::copyMakeBorder(in, out, 256, 256, 256, 256, cv::BORDER_CONSTANT, cv::Scalar(0.0));
      });
}

// Where a map of 2 to 1 reads a disk in the middle of a photograph: the peer's tables, which it is given ready-made.
void MakeMaps(int width, double center, double radius, double tiltY, double tiltX, cv::Mat& mapX, cv::Mat& mapY) {
  double a[3][3];
  double b[3][3];
  double turn[3][3];
  RotateY(tiltY, a);
  RotateX(tiltX, b);
  MulMatrix(b, a, turn);
  mapX.create(width / 2, width, CV_32F);
  mapY.create(width / 2, width, CV_32F);
  for (int y = 0; y < width / 2; ++y) {
    for (int x = 0; x < width; ++x) {
      double const ad[2] = {(x - width * 0.5) / width * 360.0, (y - width * 0.25) / (width / 2) * -180.0};
      double dc[3];
      AdToDc(ad, dc);
      RotateDc(dc, turn, dc);
      bool const isSeen = dc[0] >= 0.0;
      mapX.at<float>(y, x) = isSeen ? static_cast<float>(dc[1] * radius + center) : -10.0f;
      mapY.at<float>(y, x) = isSeen ? static_cast<float>(center - dc[2] * radius) : -10.0f;
    }
  }
}

ORB_COMPARISONS(resample_map) {
  constexpr int kWidth = 4096;
  constexpr double kRadius = 512.0;
  constexpr double kCenter = 600.0;
  constexpr double kTiltY = 10.0;
  constexpr double kTiltX = 25.0;
  COrbImage src = SkyImage(1201, 1201, 1);
  cv::Mat const in = MatOver(src, 0);
  cv::Mat mapX;
  cv::Mat mapY;
  MakeMaps(kWidth, kCenter, kRadius, kTiltY, kTiltX, mapX, mapY);
  CImgExpansion map;
  map.CopyImage(COrbImage(-32, kWidth, kWidth / 2, 1, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  cv::Mat out(mapX.size(), CV_32F);
  runner.Compare(
      "CImgExpansion, 4096 x 2048 of a disk of 1024", 3.0, "OpenCV remap, its maps ready-made",
      [&] { map.Do(&src, kCenter, kCenter, kRadius, kTiltY, kTiltX, 1.0, 0, nullptr, 0); },
      [&] { cv::remap(in, out, mapX, mapY, cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar(0.0)); });
}

}  // namespace
