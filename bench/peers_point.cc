// Point operators, equalisation and false colours against peers, one 4096 x 4096 plane. Groups are named point_*.
#include <bench/side_by_side.h>
#include <orbimg/orbimg.h>

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include <bench/bench_images.h>

namespace {

using orb::bench::MatOver;
using orb::bench::Python;
using orb::bench::Runner;
using orb::bench::SkyImage;

constexpr int kSide = 4096;

// An operator object's run against one multiply-add of the same plane.
template <typename Operator, typename Run>
void CompareWithMultiplyAdd(Runner& runner, std::string const& work, Run run) {
  COrbImage src = SkyImage(kSide, kSide, 1);
  Operator dst;
  dst.CopyImage(src, nullptr, nullptr);
  cv::Mat const in = MatOver(src, 0);
  cv::Mat out(in.size(), CV_32F);
  runner.Compare(
      work, 1.5, "OpenCV convertTo", [&] { run(dst, &src); }, [&] { in.convertTo(out, CV_32F, 1.25, -17.5); });
}

ORB_COMPARISONS(point_bright) {
  CompareWithMultiplyAdd<CImgBright>(
      runner, "CImgBright", [](CImgBright& dst, COrbImage* src) { dst.Do(12.0, 64.0, 128.0, src, nullptr, 0); });
}

ORB_COMPARISONS(point_calculate) {
  char const* const names[] = {"add", "subtract, clamped", "multiply", "divide"};
  for (int operation = 0; operation < 4; ++operation) {
    CompareWithMultiplyAdd<CImgCalculation>(
        runner, std::string("CImgCalculation, ") + names[operation],
        [&](CImgCalculation& dst, COrbImage* src) { dst.Do(1.7, operation, 1, src, nullptr, 0); });
  }
}

ORB_COMPARISONS(point_balance) {
  CompareWithMultiplyAdd<CImgColorBalance>(runner, "CImgColorBalance", [](CImgColorBalance& dst, COrbImage* src) {
    dst.Do(12.0, 0.0, 0.0, src, nullptr, 0);
  });
}

ORB_COMPARISONS(point_posterise) {
  CompareWithMultiplyAdd<CImgReduceTone>(runner, "CImgReduceTone",
                                         [](CImgReduceTone& dst, COrbImage* src) { dst.Do(37, src, nullptr, 0); });
}

ORB_COMPARISONS(point_curve) {
  COrbImage src = SkyImage(kSide, kSide, 1);
  CImgToneCurve dst;
  dst.CopyImage(src, nullptr, nullptr);
  std::vector<float> curve;
  for (int i = 0; i < 256; ++i) curve.push_back(static_cast<float>(i * i) / 65025.0f);
  float* curves[] = {curve.data()};
  std::vector<float> out(static_cast<std::size_t>(src.GetPixelCount()));
  Python python("import numpy as np");
  python.SetFloats("plane", src.GetImageAdr(0, 0, 0, 1, nullptr), {kSide, kSide});
  python.SetFloats("curve", curve.data(), {256});
  python.SetFloats("out", out.data(), {kSide, kSide});
  runner.Compare(
      "CImgToneCurve, mono", 0.25, "numpy in float64", [&] { dst.Do(curves, 256, &src, nullptr, 0); },
      [&] {
        python.Run(
            "v = (plane.astype(np.float64) - 900.0) / 600.0 * 255.0\n"
            "i = (255 * np.clip(v, 0.0, 255.0) * 0.00392156862745098).astype(np.int32)\n"
            "w = curve.astype(np.float64)[i] * 255.0\n"
            "w[v < 0.0] = 0.0\n"
            "above = v > 255.0\n"
            "w[above] = (curve[255] - curve[254]) * 255 * (v[above] - 255.0) + 255.0\n"
            "out[:] = 600.0 * w * 0.00392156862745098 + 900.0\n");
      },
      3);
}

ORB_COMPARISONS(point_false_color) {
  COrbImage src = SkyImage(kSide, kSide, 1);
  CImgFalseColor dst;
  dst.CopyImage(SkyImage(kSide, kSide, 3), nullptr, nullptr);
  std::vector<float> out(3 * static_cast<std::size_t>(src.GetPixelCount()));
  Python python("import numpy as np");
  python.SetFloats("plane", src.GetImageAdr(0, 0, 0, 1, nullptr), {kSide, kSide});
  python.SetFloats("out", out.data(), {3, kSide, kSide});
  runner.Compare(
      "CImgFalseColor, mono to spectrum", 0.25, "numpy in float64",
      [&] { dst.Do(900.0, 1200.0, 0, 0, &src, nullptr, 0); },
      [&] {
        python.Run(
            "stops = np.array([[0, 0, 255], [0, 255, 255], [0, 255, 0], [255, 255, 0], [255, 0, 0], [0, 0, 0]],"
            " np.float64)\n"
            "v = np.clip((plane.astype(np.float64) - 900.0) / 600.0 * 255.0 / 127.5 * 255.0, 0.0, 255.0)\n"
            "s = (v * 0.01568627450980392).astype(np.int32)\n"
            "f = (v - s * 63.75) * 0.01568627450980392\n"
            "for p in range(3):\n"
            "    c = stops[:, p][s] * (1 - f) + stops[:, p][s + 1] * f\n"
            "    out[p] = 600.0 * c * 0.00392156862745098 + 900.0\n");
      },
      3);
}

ORB_COMPARISONS(point_equalise) {
  COrbImage src = SkyImage(kSide, kSide, 1);
  CImgHstEql dst;
  dst.CopyImage(src, nullptr, nullptr);
  std::vector<float> out(static_cast<std::size_t>(src.GetPixelCount()));
  Python python("import numpy as np");
  python.SetFloats("plane", src.GetImageAdr(0, 0, 0, 1, nullptr), {kSide * kSide});
  python.SetFloats("out", out.data(), {kSide * kSide});
  python.Run("levels = np.linspace(plane.min(), plane.max(), plane.size, dtype=np.float32)");
  runner.Compare(
      "CImgHstEql", 0.25, "numpy.argsort and scatter", [&] { dst.Do(&src); },
      [&] { python.Run("out[np.argsort(plane)] = levels"); }, 3);
}

}  // namespace
