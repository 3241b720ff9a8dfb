// The RGB composite against three of OpenCV's bilinear warps and a merge, the mosaic against two warps; canvases of
// 4096 x 4096.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <bench/bench_images.h>

namespace {

using orb::bench::MatOver;
using orb::bench::SkyImage;

constexpr int kSide = 4096;

// The peer's map for an image that lies at dx, dy, turned by `degrees` about (cx, cy).
// sx = c (x - cx - dx) - s (cy - y + dy) + cx, sy = cy - s (x - cx - dx) - c (cy - y + dy)
cv::Mat MapOf(double dx, double dy, double degrees, double cx, double cy) {
  double const radians = degrees * orb::kRadiansPerDegree;
  double const s = std::sin(radians);
  double const c = std::cos(radians);
  return (cv::Mat_<double>(2, 3) << c, s, -c * (cx + dx) - s * (cy + dy) + cx,  //
          -s, c, cy + s * (cx + dx) - c * (cy + dy));
}

void Warp(cv::Mat const& from, cv::Mat const& map, cv::Mat& to) {
  cv::warpAffine(from, to, map, to.size(), cv::INTER_LINEAR | cv::WARP_INVERSE_MAP, cv::BORDER_CONSTANT, 0.0);
}

ORB_COMPARISONS(channel_rgb) {
  struct Exposure {
    double dx, dy, degrees;
  };
  Exposure const e[3] = {{7.3, -4.6, 3.0}, {-2.4, 1.7, -1.5}, {0.6, 3.2, 0.8}};
  COrbImage sources[3] = {SkyImage(kSide, kSide, 1, 1), SkyImage(kSide, kSide, 1, 2), SkyImage(kSide, kSide, 1, 3)};
  cv::Mat maps[3];
  for (int i = 0; i < 3; ++i) {
    sources[i].SetStdCtr(kSide / 2, kSide / 2);
    maps[i] = MapOf(e[i].dx, e[i].dy, e[i].degrees, kSide / 2, kSide / 2);
  }
  CImgRgbCmpst dst;
  dst.CopyImage(SkyImage(kSide, kSide, 3, 4), nullptr, nullptr);
  std::vector<cv::Mat> warped(3);
  for (cv::Mat& each : warped) each.create(kSide, kSide, CV_32F);
  cv::Mat merged;
  runner.Compare(
      "CImgRgbCmpst, three shifts and rotations", 0.9, "3 x OpenCV warpAffine, merge",
      [&] {
        dst.Do(&sources[0], e[0].dx, e[0].dy, e[0].degrees, &sources[1], e[1].dx, e[1].dy, e[1].degrees, &sources[2],
               e[2].dx, e[2].dy, e[2].degrees, nullptr, 0, nullptr, 0);
      },
      [&] {
        for (std::size_t i = 0; i < 3; ++i) Warp(MatOver(sources[i], 0), maps[i], warped[i]);
        cv::merge(warped, merged);
      });
}

// Two tiles of 2800 x 4096 that overlap by some 1500 columns.
ORB_COMPARISONS(channel_mosaic) {
  constexpr int kTileWidth = 2800;
  constexpr double kDx = 1290.4;
  constexpr double kDy = -3.7;
  constexpr double kDegrees = 2.0;
  COrbImage first = SkyImage(kTileWidth, kSide, 1, 1);
  COrbImage second = SkyImage(kTileWidth, kSide, 1, 2);
  second.SetStdCtr(kTileWidth / 2, kSide / 2);
  CImgMosic canvas;
  canvas.CopyImage(SkyImage(kSide, kSide, 1, 3), nullptr, nullptr);
  cv::Mat const firstMap = MapOf(0.0, 0.0, 0.0, 0.0, 0.0);
  cv::Mat const secondMap = MapOf(kDx, kDy, kDegrees, kTileWidth / 2, kSide / 2);
  cv::Mat one(kSide, kSide, CV_32F);
  cv::Mat two(kSide, kSide, CV_32F);
  auto const warpBoth = [&] {
    Warp(MatOver(first, 0), firstMap, one);
    Warp(MatOver(second, 0), secondMap, two);
  };
  runner.Compare(
      "CImgMosic lighter, raw", 1.0, "2 x OpenCV warpAffine",
      [&] { canvas.Do(&first, 0, 0, &second, kDx, kDy, kDegrees, 2, nullptr, nullptr, 0, 0, nullptr, 0); }, warpBoth);
  float outside = 0.0f;
  runner.Compare(
      "CImgMosic lighter, 256-scale", 1.0, "2 x OpenCV warpAffine",
      [&] { canvas.Do(&first, 0, 0, &second, kDx, kDy, kDegrees, 2, nullptr, &outside, 1, 0, nullptr, 0); }, warpBoth);
}

}  // namespace
