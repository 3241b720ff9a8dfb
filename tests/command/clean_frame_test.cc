// The sky's mesh, spikes, and smoothing.
#include <cmath>

#include <gtest/gtest.h>
#include <hosts/orbimg/clean_frame.h>
#include <hosts/orbimg/sky_map.h>
#include <orbimg/orbimg.h>
#include <tests/command/synthetic_stars.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::CleanFrame;
using host::MapSky;
using host::SkyMap;
using host::SmoothFrame;

float& SampleAt(COrbImage& image, int x, int y) { return *image.GetImageAdr(x, y, 0, 0, nullptr); }

TEST(SkyMap, FollowsASlopeUpToTheEdges) {
  COrbImage image = SkyImage(300, 200, 0.0, 0.0, 1);
  for (int y = 0; y < 200; ++y) {
    for (int x = 0; x < 300; ++x) SampleAt(image, x, y) = static_cast<float>(100.0 + 2.0 * x - y);
  }
  SkyMap const sky = MapSky(image, 32);
  std::vector<float> level(300);
  for (int y : {0, 1, 99, 199}) {
    sky.LevelRow(y, level.data());
    for (int x = 0; x < 300; ++x) EXPECT_NEAR(100.0 + 2.0 * x - y, level[x], 4.0) << x << ' ' << y;
  }
}

TEST(SkyMap, MeasuresTheNoise) {
  COrbImage const image = SkyImage(256, 256, 1000.0, 20.0, 2);
  std::vector<float> noise(256);
  MapSky(image, 64).NoiseRow(130, noise.data());
  EXPECT_NEAR(20.0, noise[130], 1.0);
}

TEST(SkyMap, ACellFullOfLightIsMended) {
  COrbImage image = SkyImage(320, 320, 1000.0, 5.0, 3);
  for (int y = 128; y < 192; ++y) {
    for (int x = 128; x < 192; ++x) SampleAt(image, x, y) += 9000.0f;
  }
  std::vector<float> level(320);
  MapSky(image, 64).LevelRow(160, level.data());
  EXPECT_NEAR(1000.0, level[160], 3.0);
}

TEST(CleanFrame, TakesSpikesAndLeavesStars) {
  COrbImage image = SkyImage(128, 128, 1000.0, 5.0, 4);
  AddGaussian(image, 40.0, 40.0, 1000.0, 2.0);
  SampleAt(image, 90, 90) = 9000.0f;
  COrbImage clean = CleanFrame(image, 64);
  EXPECT_NEAR(1000.0, SampleAt(clean, 40, 40), 30.0);
  EXPECT_NEAR(0.0, SampleAt(clean, 90, 90), 20.0);
  EXPECT_EQ(0.0, clean.GetLevelMin(0));
  EXPECT_EQ(255.0, clean.GetLevelMax(0));
}

// The weights 1 4 6 4 1 on both axes over 256.
TEST(SmoothFrame, SpreadsAPointByTheBinomialWeights) {
  COrbImage point(-32, 9, 8, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SampleAt(point, 4, 3) = 256.0f;
  COrbImage smooth = SmoothFrame(point, 1);
  double const weights[5] = {1.0, 4.0, 6.0, 4.0, 1.0};
  for (int y = 0; y < 8; ++y) {
    for (int x = 0; x < 9; ++x) {
      bool const near = std::abs(x - 4) <= 2 && std::abs(y - 3) <= 2;
      double const expected = near ? weights[x - 2] * weights[y - 1] : 0.0;
      EXPECT_EQ(expected, SampleAt(smooth, x, y)) << x << ' ' << y;
    }
  }
}

TEST(SmoothFrame, KeepsAConstantUpToTheEdges) {
  for (int width : {1, 2, 3, 20}) {
    COrbImage flat(-32, width, 5, 1, 1.0, 0.0, 1, nullptr, nullptr);
    SetSamples(flat, std::vector<float>(static_cast<std::size_t>(width) * 5, 12.0f));
    EXPECT_TRUE(SameBits(SamplesOf(flat), SamplesOf(SmoothFrame(flat, 3))));
  }
}

TEST(SmoothFrame, NoPassesChangeNothing) {
  COrbImage const image = SkyImage(20, 10, 5.0, 1.0, 5);
  EXPECT_TRUE(SameBits(image, SmoothFrame(image, 0)));
}

}  // namespace
}  // namespace orb::test
