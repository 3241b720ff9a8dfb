// Filters over neighbourhoods against OpenCV on floats, one 4096 x 4096 plane. The peers hold or mirror their borders,
// which is a matter of a few columns.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <bench/bench_images.h>

namespace {

using orb::bench::MatOver;
using orb::bench::SkyImage;

constexpr int kSide = 4096;

// Ours and theirs on the same sky, each with a destination of its own.
template <typename Filter>
class Sides {
 public:
  Sides() : src(SkyImage(kSide, kSide, 1)), in(MatOver(src, 0)), out(in.size(), CV_32F) {
    dst.CopyImage(src, nullptr, nullptr);
    in.copyTo(out);
  }

  COrbImage src;
  Filter dst;
  cv::Mat in;
  cv::Mat out;
};

void CompareGaussian(orb::bench::Runner& runner, char const* name, double limit, double sigma, int size) {
  Sides<CImgFilterBlur> on;
  runner.Compare(
      name, limit, "OpenCV GaussianBlur of the same size", [&] { on.dst.GaussianFilter(sigma, &on.src, nullptr, 0); },
      [&] { cv::GaussianBlur(on.in, on.out, cv::Size(size, size), sigma, sigma, cv::BORDER_REFLECT); });
}

ORB_COMPARISONS(filter_gaussian) {
  CompareGaussian(runner, "CImgFilterBlur::GaussianFilter, sigma 2, 9 x 9", 1.4, 2.0, 9);
  CompareGaussian(runner, "CImgFilterBlur::GaussianFilter, sigma 5, 21 x 21", 1.0, 5.0, 21);
}

ORB_COMPARISONS(filter_median) {
  Sides<CImgFilter> on;
  runner.Compare(
      "CImgFilter::MedianFilter, 3 x 3", 1.2, "OpenCV medianBlur 3",
      [&] { on.dst.MedianFilter(1, &on.src, nullptr, 0); }, [&] { cv::medianBlur(on.in, on.out, 3); });
  runner.Compare(
      "CImgFilter::MedianFilter, 21 samples", 0.8, "OpenCV medianBlur 5",
      [&] { on.dst.MedianFilter(2, &on.src, nullptr, 0); }, [&] { cv::medianBlur(on.in, on.out, 5); });
}

ORB_COMPARISONS(filter_extremes) {
  Sides<CImgFilter> on;
  cv::Mat const square = cv::Mat::ones(3, 3, CV_8U);
  runner.Compare(
      "CImgFilter::MinMaxFilter, minimum of 3 x 3", 1.2, "OpenCV erode",
      [&] { on.dst.MinMaxFilter(1, 0, &on.src, nullptr, 0); }, [&] { cv::erode(on.in, on.out, square); });
  runner.Compare(
      "CImgFilter::MinMaxFilter, maximum of 3 x 3", 1.2, "OpenCV dilate",
      [&] { on.dst.MinMaxFilter(1, 8, &on.src, nullptr, 0); }, [&] { cv::dilate(on.in, on.out, square); });
}

void CompareCustom(orb::bench::Runner& runner, char const* name, double limit, int radius) {
  Sides<CImgFilterMisc> on;
  int const size = 2 * radius + 1;
  cv::Mat weights(size, size, CV_64F);
  cv::randu(weights, 0.1, 1.0);
  cv::Mat narrow;
  weights.convertTo(narrow, CV_32F);
  runner.Compare(
      name, limit, "OpenCV filter2D", [&] { on.dst.Custom(radius, weights.ptr<double>(), &on.src, nullptr, 0); },
      [&] { cv::filter2D(on.in, on.out, CV_32F, narrow); });
}

ORB_COMPARISONS(filter_custom) {
  CompareCustom(runner, "CImgFilterMisc::Custom, 3 x 3", 1.5, 1);
  CompareCustom(runner, "CImgFilterMisc::Custom, 7 x 7", 1.6, 3);
}

}  // namespace
