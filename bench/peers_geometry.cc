// Operators that move samples against OpenCV, one 4096 x 4096 plane.
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

ORB_COMPARISONS(geometry_move) {
  COrbImage src = SkyImage(kSide, kSide, 1);
  cv::Mat const in = MatOver(src, 0);
  cv::Mat out(in.size(), CV_32F);
  CImgFlip flip;
  flip.CopyImage(src, nullptr, nullptr);
  runner.Compare(
      "CImgFlip upside down", 1.1, "OpenCV flip", [&] { flip.Do(0, &src, 0); }, [&] { cv::flip(in, out, 0); });
  runner.Compare(
      "CImgFlip left to right", 1.1, "OpenCV flip", [&] { flip.Do(1, &src, 0); }, [&] { cv::flip(in, out, 1); });
  CImgRotate turned;
  turned.CopyImage(src, nullptr, nullptr);
  runner.Compare(
      "CImgRotate::Do180", 1.1, "OpenCV rotate", [&] { turned.Do180(&src, 0); },
      [&] { cv::rotate(in, out, cv::ROTATE_180); });
  CImgScroll scrolled;
  scrolled.CopyImage(src, nullptr, nullptr);
  int const a = 1000;
  runner.Compare(
      "CImgScroll up", 1.1, "OpenCV copyTo, two parts", [&] { scrolled.Do(a, 0, &src, 0); },
      [&] {
        in.rowRange(a, kSide).copyTo(out.rowRange(0, kSide - a));
        in.rowRange(0, a).copyTo(out.rowRange(kSide - a, kSide));
      });
  runner.Compare(
      "CImgScroll to the right", 1.1, "OpenCV copyTo, two parts", [&] { scrolled.Do(a, 1, &src, 0); },
      [&] {
        in.colRange(0, kSide - a).copyTo(out.colRange(a, kSide));
        in.colRange(kSide - a, kSide).copyTo(out.colRange(0, a));
      });
}

ORB_COMPARISONS(geometry_crop) {
  COrbImage src = SkyImage(kSide, kSide, 1);
  cv::Mat const in = MatOver(src, 0);
  cv::Mat out;
  CRect const rect(100, 50, 4000, 4090);
  CImgCrop crop;
  crop.CopyImage(src, nullptr, nullptr);
  cv::Mat const part = in(cv::Rect(rect.left, rect.top, rect.Width(), rect.Height()));
  runner.Compare(
      "CImgCrop into memory of that size", 1.1, "OpenCV copyTo of a part", [&] { crop.Do(rect, &src, 0); },
      [&] { part.copyTo(out); });
  runner.Compare(
      "CImgCrop into new memory", 1.1, "OpenCV clone of a part",
      [&] {
        crop.ChangeSize(kSide, kSide, nullptr, nullptr);
        crop.Do(rect, &src, 0);
      },
      [&] { out = part.clone(); });
}

ORB_COMPARISONS(geometry_turn) {
  COrbImage src = SkyImage(kSide, kSide, 1);
  cv::Mat const in = MatOver(src, 0);
  cv::Mat out;
  CImgRotate turned;
  turned.CopyImage(src, nullptr, nullptr);
  runner.Compare(
      "CImgRotate::Do90 to the left", 0.5, "OpenCV rotate", [&] { turned.Do90(0, &src, 0); },
      [&] { cv::rotate(in, out, cv::ROTATE_90_COUNTERCLOCKWISE); });
  runner.Compare(
      "CImgRotate::Do90 to the right", 0.5, "OpenCV rotate", [&] { turned.Do90(1, &src, 0); },
      [&] { cv::rotate(in, out, cv::ROTATE_90_CLOCKWISE); });
}

// Ours from the size of the source to that of the turned image, which is new memory each time; the peer keeps its own.
ORB_COMPARISONS(geometry_rotate) {
  COrbImage src = SkyImage(kSide, kSide, 1);
  cv::Mat const in = MatOver(src, 0);
  cv::Mat out;
  constexpr double kAngle = 30.0;
  CSize const size = orb::FindTurnedSize(kSide, kSide, kAngle);
  double const s = std::sin(kAngle * orb::kRadiansPerDegree);
  double const c = std::cos(kAngle * orb::kRadiansPerDegree);
  double const centre = kSide / 2;
  double const dx = centre + (size.cx - kSide) * 0.5;
  double const dy = centre + (size.cy - kSide) * 0.5;
  cv::Mat const map = (cv::Mat_<double>(2, 3) << c, s, centre - c * dx - s * dy, -s, c, centre + s * dx - c * dy);
  CImgRotate turned;
  turned.CopyImage(src, nullptr, nullptr);
  double fill = 900.0;
  runner.Compare(
      "CImgRotate 30 degrees with growth", 0.75, "OpenCV warpAffine",
      [&] {
        turned.ChangeSize(kSide, kSide, nullptr, nullptr);
        turned.Do(kAngle, &fill, &src, 1, 0);
      },
      [&] {
        cv::warpAffine(in, out, map, cv::Size(size.cx, size.cy), cv::INTER_LINEAR | cv::WARP_INVERSE_MAP,
                       cv::BORDER_CONSTANT, fill);
      });
}

ORB_COMPARISONS(geometry_bin) {
  COrbImage src = SkyImage(kSide, kSide, 1);
  cv::Mat const in = MatOver(src, 0);
  cv::Mat out;
  CImgSoftBinning binned;
  binned.CopyImage(src, nullptr, nullptr);
  runner.Compare(
      "CImgSoftBinning 2 x 2", 1.3, "OpenCV resize INTER_AREA",
      [&] {
        binned.ChangeSize(kSide, kSide, nullptr, nullptr);
        binned.Do(2, 2, 0, 0, &src, 0);
      },
      [&] { cv::resize(in, out, cv::Size(kSide / 2, kSide / 2), 0, 0, cv::INTER_AREA); });
}

}  // namespace
