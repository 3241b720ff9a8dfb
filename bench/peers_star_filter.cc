// Filters for stars and nebulae beside their plain transcriptions, the rotational gradient beside two rotations. The
// transcriptions take up to a microsecond a sample, so their planes are smaller.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <opencv2/imgproc.hpp>

#include <bench/bench_images.h>
#include <tests/reference/star_filter_reference.h>

namespace {

using orb::bench::MatOver;
using orb::bench::SkyImage;
namespace reference = orb::test::reference;

constexpr int kPlane = 4096;
constexpr int kSmallPlane = 2048;
constexpr int kRepeats = 3;
char const* const kPeer = "the plain transcription";

template <typename Operator>
Operator LikeOf(COrbImage const& src) {
  Operator dst;
  dst.CopyImage(src, nullptr, nullptr);
  return dst;
}

}  // namespace

ORB_COMPARISONS(starfilter_sharp) {
  COrbImage src = SkyImage(kSmallPlane, kSmallPlane, 1);
  auto dst = LikeOf<CImgFilterSpecial>(src);
  runner.Compare(
      "CImgFilterSpecial::StarSharpFilter, radius 3, 2048 x 2048", 0.05, kPeer,
      [&] { dst.StarSharpFilter(3.0, 8.5, 0.1, 1, &src, nullptr, 0); },
      [&] { reference::StarSharpFilter(dst, 3.0, 8.5, 0.1, 1, src, nullptr); }, kRepeats);
}

ORB_COMPARISONS(starfilter_enhance) {
  COrbImage src = SkyImage(kSmallPlane, kSmallPlane, 1);
  auto dst = LikeOf<CImgFilterSpecial>(src);
  runner.Compare(
      "CImgFilterSpecial::StarEnhanceFilter, sigma 2, 2048 x 2048", 0.2, kPeer,
      [&] { dst.StarEnhanceFilter(2.0, 1.0, 0.1, &src, nullptr, 0); },
      [&] { reference::StarEnhanceFilter(dst, 2.0, 1.0, 0.1, src, nullptr); }, kRepeats);
}

ORB_COMPARISONS(starfilter_nebula) {
  COrbImage src = SkyImage(kSmallPlane, kSmallPlane, 1);
  auto dst = LikeOf<CImgFilterSpecial>(src);
  runner.Compare(
      "CImgFilterSpecial::NebularSmootherFilter, sigma 2, clear radius 3, 2048 x 2048", 0.1, kPeer,
      [&] { dst.NebularSmootherFilter(2.0, 2.0, 3.0, &src, nullptr, 0); },
      [&] { reference::NebularSmootherFilter(dst, 2.0, 2.0, 3.0, src, nullptr); }, kRepeats);
}

ORB_COMPARISONS(starfilter_development) {
  COrbImage src = SkyImage(kPlane, kPlane, 1);
  auto dst = LikeOf<CImgFilterSpecial>(src);
  int from[] = {0};
  runner.Compare(
      "CImgFilterSpecial::DigitalDvlp", 0.2, kPeer, [&] { dst.DigitalDvlp(1100.0, 1.0, &src, from, nullptr, 0); },
      [&] { reference::DigitalDvlp(dst, 1100.0, 1.0, src, from, nullptr); }, kRepeats);
}

ORB_COMPARISONS(starfilter_rotation) {
  constexpr double kAngle = 7.0;
  constexpr double kGain = 5.0;
  constexpr double kCentre = kPlane / 2.0 + 0.3;
  COrbImage src = SkyImage(kPlane, kPlane, 1);
  auto dst = LikeOf<CImgRttnGrdtn>(src);
  cv::Mat const in = MatOver(src, 0);
  cv::Mat plus(in.size(), CV_32F), minus(in.size(), CV_32F), out(in.size(), CV_32F);
  auto const turn = [&](double angle, cv::Mat& turned) {
    cv::Mat const rotation = cv::getRotationMatrix2D(cv::Point2f(kCentre, kCentre), angle, 1.0);
    cv::warpAffine(in, turned, rotation, in.size(), cv::INTER_LINEAR | cv::WARP_INVERSE_MAP, cv::BORDER_CONSTANT);
  };
  runner.Compare(
      "CImgRttnGrdtn", 1.2, "OpenCV warpAffine twice, and addWeighted twice",
      [&] { dst.Do(kAngle, kGain, kCentre, kCentre, &src, nullptr, 0); },
      [&] {
        turn(kAngle, plus);
        turn(-kAngle, minus);
        cv::addWeighted(plus, -1.0 / kGain, minus, -1.0 / kGain, 0.0, out);
        cv::addWeighted(in, (kGain + 2.0) / kGain, out, 1.0, 0.0, out);
      },
      kRepeats);
}
