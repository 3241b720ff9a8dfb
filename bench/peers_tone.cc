// Tone operators against peers, one 4096 x 4096 plane.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <algorithm>
#include <vector>

#include <bench/bench_images.h>

namespace {

using orb::bench::SkyImage;

ORB_COMPARISONS(auto_level) {
  CImgAutoLevel image;
  image.CopyImage(SkyImage(4096, 4096, 1), nullptr, nullptr);
  float const* const samples = image.GetImageAdr(0, 0, 0, 1, nullptr);
  std::vector<float> copy(static_cast<std::size_t>(image.GetPixelCount()));
  runner.Compare(
      "CImgAutoLevel::DoByMedian", 0.25, "copy, std::nth_element", [&] { image.DoByMedian(1.0, 8.0, 0, nullptr, 0.0); },
      [&] {
        std::copy_n(samples, copy.size(), copy.begin());
        std::nth_element(copy.begin(), copy.begin() + static_cast<std::ptrdiff_t>(copy.size() / 2), copy.end());
      });
}

}  // namespace
