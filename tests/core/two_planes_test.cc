// An image of two planes counts as colour but has no brightness: plane 0 stands for it, and no third plane is read.
#include <gtest/gtest.h>
#include <orbimg/core/sampled_row_kernels.h>
#include <orbimg/orbimg.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

// The same plane 0 in two planes and in one.
struct Pair {
  COrbImage two;
  COrbImage mono;
};

Pair MakePair() {
  Random random(81);
  Pair pair{COrbImage(-32, 30, 8, 2, 1.0, 0.0, 1, nullptr, nullptr),
            COrbImage(-32, 30, 8, 1, 1.0, 0.0, 1, nullptr, nullptr)};
  FillRandom(pair.two, random);
  SetRandomLevels(pair.two, random);
  std::vector<float> first = SamplesOf(pair.two);
  first.resize(240);
  SetSamples(pair.mono, first);
  pair.mono.CImage::SetLevel(0, pair.two.GetLevelMin(0), pair.two.GetLevelMax(0));
  return pair;
}

TEST(TwoPlanes, BrightnessOfAPixelIsPlane0) {
  Pair pair = MakePair();
  ASSERT_EQ(1, pair.two.IsColor());
  for (int y = 0; y < 8; ++y) {
    for (int x = 0; x < 30; ++x) {
      EXPECT_EQ(pair.mono.GetPixelBright256f(x, y), pair.two.GetPixelBright256f(x, y));
      EXPECT_EQ(pair.mono.GetPixelBrightRaw(x, y), pair.two.GetPixelBrightRaw(x, y));
    }
  }
}

TEST(TwoPlanes, SamplesGivePlane0ForBrightnessAndColours) {
  Pair pair = MakePair();
  auto const gray = [](COrbImage& image, int x, int nearest) {
    return image.GetPixelGrayRaw(x, 3, 0.5, 0.25, 0.0, 1.0, 1.0, -1, -9.0, nearest, nullptr, nullptr, nullptr);
  };
  auto const gray256 = [](COrbImage& image, int x, int nearest) {
    return image.GetPixelGray256f(x, 3, 0.5, 0.25, 0.0, 1.0, 1.0, -1, -9.0, nearest, nullptr, nullptr, nullptr);
  };
  for (int x = 0; x < 32; ++x) {
    for (int const nearest : {0, 1}) {
      EXPECT_EQ(gray(pair.mono, x, nearest), gray(pair.two, x, nearest));
      EXPECT_EQ(gray256(pair.mono, x, nearest), gray256(pair.two, x, nearest));
    }
    double r = 0.0;
    double g = 0.0;
    double b = 0.0;
    pair.two.GetPixelRgbRaw(x, 3, 0.5, 0.25, 0.0, 1.0, 1.0, &r, &g, &b, -9.0, nullptr, nullptr, nullptr);
    EXPECT_EQ(gray(pair.mono, x, 0), static_cast<float>(r));
    EXPECT_EQ(r, g);
    EXPECT_EQ(r, b);
  }
}

TEST(TwoPlanes, WholeRowsGivePlane0ForBrightness) {
  Pair pair = MakePair();
  for (double const angle : {0.0, 0.1}) {
    SampledRow two(pair.two, 0, 30, 0.5, 0.25, angle, 1.0 - angle);
    SampledRow mono(pair.mono, 0, 30, 0.5, 0.25, angle, 1.0 - angle);
    std::vector<float> found(30, 1.0f);
    std::vector<float> expected(30, 2.0f);
    for (int y = 0; y < 8; ++y) {
      two.Locate(y);
      mono.Locate(y);
      two.SampleRaw(-1, 0.0, found.data());
      mono.SampleRaw(-1, 0.0, expected.data());
      EXPECT_TRUE(SameBits(expected, found));
      two.Sample256f(-1, 0.0, found.data());
      mono.Sample256f(-1, 0.0, expected.data());
      EXPECT_TRUE(SameBits(expected, found));
    }
  }
}

}  // namespace
}  // namespace orb::test
