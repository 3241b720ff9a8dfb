// Median stack and image matching against array libraries, frames of 4096 x 4096.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <opencv2/imgproc.hpp>

#include <bench/bench_images.h>

namespace {

using orb::bench::MatOver;
using orb::bench::SkyImage;

constexpr int kSize = 4096;
constexpr int kFrames = 20;
constexpr std::size_t kPixels = static_cast<std::size_t>(kSize) * kSize;

// The frames of a stack: each an image of its own, as a program holds them that has read them one by one.
class Frames {
 public:
  Frames() {
    for (int i = 0; i < kFrames; ++i) {
      images.push_back(std::make_unique<COrbImage>(SkyImage(kSize, kSize, 1, static_cast<std::uint32_t>(i + 1))));
    }
  }
  COrbImage& Image(int i) { return *images[static_cast<std::size_t>(i)]; }

  // The same samples in one block, as an array library wants them.
  std::vector<float> Block() {
    std::vector<float> samples(kFrames * kPixels);
    for (int i = 0; i < kFrames; ++i) {
      std::copy_n(Image(i).GetImageAdr(0, 0, 0, 1, nullptr), kPixels, &samples[static_cast<std::size_t>(i) * kPixels]);
    }
    return samples;
  }

 private:
  std::vector<std::unique_ptr<COrbImage>> images;
};

struct FrameShift {
  double dx;
  double dy;
};

FrameShift WholeShift(int frame) { return FrameShift{frame % 5 - 2.0, frame % 3 - 1.0}; }
FrameShift FractionalShift(int frame) { return FrameShift{frame * 0.37 - 3.1, frame * 0.21 - 2.3}; }

void StackMedian(Frames& frames, FrameShift (*shiftOf)(int), COrbImage& destination) {
  CImgMedianComposit median(&destination);
  for (int y = 0; y < kSize; ++y) {
    for (int i = 0; i < kFrames; ++i) {
      FrameShift const shift = shiftOf(i);
      median.Store(&frames.Image(i), y, shift.dx, shift.dy, 0.0);
    }
    median.Calc();
  }
}

// Written once, so that its own pages do not count as memory of the first run.
COrbImage Destination() { return SkyImage(kSize, kSize, 1); }

ORB_COMPARISONS(median_whole) {
  Frames frames;
  std::vector<float> block = frames.Block();
  COrbImage destination = Destination();
  orb::bench::Python python("import bottleneck");
  python.SetFloats("frames", block.data(), {kFrames, kSize, kSize});
  runner.Compare(
      "CImgMedianComposit, 20 frames, whole shifts", 0.10, "bottleneck.nanmedian(frames, axis=0)",
      [&] { StackMedian(frames, WholeShift, destination); },
      [&] { python.Run("out = bottleneck.nanmedian(frames, axis=0)"); }, 3);
}

// The peer shifts every frame into a block of its own, then takes the median.
ORB_COMPARISONS(median_fractional) {
  Frames frames;
  COrbImage destination = Destination();
  std::vector<float> shifted(kFrames * kPixels);
  orb::bench::Python python("import bottleneck");
  python.SetFloats("frames", shifted.data(), {kFrames, kSize, kSize});
  runner.Compare(
      "CImgMedianComposit, 20 frames, fractional shifts", 0.06, "20 OpenCV warpAffine, bottleneck.nanmedian",
      [&] { StackMedian(frames, FractionalShift, destination); },
      [&] {
        for (int i = 0; i < kFrames; ++i) {
          FrameShift const shift = FractionalShift(i);
          cv::Mat const in = MatOver(frames.Image(i), 0);
          cv::Mat out(kSize, kSize, CV_32F, &shifted[static_cast<std::size_t>(i) * kPixels]);
          cv::Matx23d const matrix(1.0, 0.0, shift.dx, 0.0, 1.0, shift.dy);
          cv::warpAffine(in, out, matrix, out.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar(0.0));
        }
        python.Run("out = bottleneck.nanmedian(frames, axis=0)");
      },
      3);
}

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
