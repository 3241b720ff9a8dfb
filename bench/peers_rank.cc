// Order statistics under a disk. The median of an array library takes microseconds a sample, so these planes are small.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <algorithm>
#include <string>
#include <vector>

#include <opencv2/imgproc.hpp>

#include <bench/bench_images.h>

namespace {

using orb::bench::MatOver;
using orb::bench::SkyImage;

constexpr int kPlane = 4096;
constexpr int kSmallPlane = 1024;
constexpr int kRepeats = 3;
constexpr char kFootprint[] = "y, x = numpy.mgrid[-{r}:{r} + 1, -{r}:{r} + 1]; disk = x * x + y * y <= {r} * {r}";

template <typename Operator>
Operator LikeOf(COrbImage const& src) {
  Operator dst;
  dst.CopyImage(src, nullptr, nullptr);
  return dst;
}

// A peer that takes the median of the samples under the whole disk.
class DiskMedianPeer {
 public:
  DiskMedianPeer(COrbImage& plane, int radius) : python("import numpy, scipy.ndimage") {
    python.SetFloats("plane", plane.GetImageAdr(0, 0, 0, 0, nullptr), {plane.GetHeight(), plane.GetWidth()});
    std::string code = kFootprint;
    for (std::size_t at = code.find("{r}"); at != std::string::npos; at = code.find("{r}")) {
      code.replace(at, 3, std::to_string(radius));
    }
    python.Run(code);
  }
  void Run() { python.Run("out = scipy.ndimage.median_filter(plane, footprint=disk)"); }

 private:
  orb::bench::Python python;
};

void CompareNoiseCut(orb::bench::Runner& runner, int radius, double limit) {
  COrbImage src = SkyImage(kSmallPlane, kSmallPlane, 1);
  auto dst = LikeOf<CImgFilterMisc>(src);
  DiskMedianPeer peer(src, radius);
  runner.Compare(
      "CImgFilterMisc::NoiseCut, radius " + std::to_string(radius) + ", 1024 x 1024", limit,
      "scipy.ndimage.median_filter with the disk", [&] { dst.NoiseCut(radius, 1, 0.1, 1, 0.1, &src, nullptr, 0); },
      [&] { peer.Run(); }, kRepeats);
}

void CompareBlurMedian(orb::bench::Runner& runner, int radius, double limit) {
  COrbImage src = SkyImage(kSmallPlane, kSmallPlane, 1);
  auto dst = LikeOf<CImgFilterBlur>(src);
  DiskMedianPeer peer(src, radius);
  runner.Compare(
      "CImgFilterBlur::MedianFilter, range " + std::to_string(radius) + ", 1024 x 1024", limit,
      "scipy.ndimage.median_filter with the disk",
      [&] { dst.MedianFilter(static_cast<double>(radius), &src, nullptr, 0); }, [&] { peer.Run(); }, kRepeats);
}

ORB_COMPARISONS(rank_noise_cut_3) { CompareNoiseCut(runner, 3, 0.02); }
ORB_COMPARISONS(rank_noise_cut_8) { CompareNoiseCut(runner, 8, 0.03); }
ORB_COMPARISONS(rank_blur_median_3) { CompareBlurMedian(runner, 3, 0.02); }
ORB_COMPARISONS(rank_blur_median_8) { CompareBlurMedian(runner, 8, 0.03); }

ORB_COMPARISONS(rank_extremes) {
  constexpr int kRadius = 8;
  COrbImage src = SkyImage(kPlane, kPlane, 1);
  auto dst = LikeOf<CImgFilterMisc>(src);
  int const last = dst.GetMinMaxFilterNmax(kRadius) - 1;
  cv::Mat const in = MatOver(src, 0);
  cv::Mat out(in.size(), CV_32F);
  cv::Mat disk(2 * kRadius + 1, 2 * kRadius + 1, CV_8U);
  for (int dy = -kRadius; dy <= kRadius; ++dy) {
    for (int dx = -kRadius; dx <= kRadius; ++dx) {
      disk.at<unsigned char>(dy + kRadius, dx + kRadius) = dx * dx + dy * dy <= kRadius * kRadius ? 1 : 0;
    }
  }
  runner.Compare(
      "CImgFilterMisc::MinMaxFilter, minimum, radius 8", 2.0, "OpenCV erode with the disk",
      [&] { dst.MinMaxFilter(kRadius, 0, &src, nullptr, 0); }, [&] { cv::erode(in, out, disk); }, kRepeats);
  runner.Compare(
      "CImgFilterMisc::MinMaxFilter, maximum, radius 8", 2.0, "OpenCV dilate with the disk",
      [&] { dst.MinMaxFilter(kRadius, last, &src, nullptr, 0); }, [&] { cv::dilate(in, out, disk); }, kRepeats);
}

// What twice the radius costs: the peer is ourselves.
ORB_COMPARISONS(rank_growth) {
  constexpr double kLimit = 2.2;
  COrbImage src = SkyImage(kSmallPlane, kSmallPlane, 1);
  auto dst = LikeOf<CImgFilterMisc>(src);
  auto blur = LikeOf<CImgFilterBlur>(src);
  auto const rank = [&](int radius, double share) {
    int const last = dst.GetMinMaxFilterNmax(radius) - 1;
    dst.MinMaxFilter(radius, static_cast<int>(share * last), &src, nullptr, 0);
  };
  char const* const peer = "the same at radius 8";
  runner.Compare(
      "CImgFilterMisc::NoiseCut, radius 16, 1024 x 1024", kLimit, peer,
      [&] { dst.NoiseCut(16.0, 1, 0.1, 1, 0.1, &src, nullptr, 0); },
      [&] { dst.NoiseCut(8.0, 1, 0.1, 1, 0.1, &src, nullptr, 0); });
  runner.Compare(
      "CImgFilterBlur::MedianFilter, range 16, 1024 x 1024", kLimit, peer,
      [&] { blur.MedianFilter(16.0, &src, nullptr, 0); }, [&] { blur.MedianFilter(8.0, &src, nullptr, 0); });
  runner.Compare(
      "CImgFilterMisc::MinMaxFilter, minimum, radius 16, 1024 x 1024", kLimit, peer, [&] { rank(16, 0.0); },
      [&] { rank(8, 0.0); });
  runner.Compare(
      "CImgFilterMisc::MinMaxFilter, maximum, radius 16, 1024 x 1024", kLimit, peer, [&] { rank(16, 1.0); },
      [&] { rank(8, 1.0); });
  runner.Compare(
      "CImgFilterMisc::MinMaxFilter, first quarter, radius 16, 1024 x 1024", kLimit, peer, [&] { rank(16, 0.25); },
      [&] { rank(8, 0.25); });
}

}  // namespace
