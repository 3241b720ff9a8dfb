// Level and noise of the sky.
#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>
#include <hosts/orbimg/frame_statistics.h>
#include <orbimg/orbimg.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::ClipSamples;
using host::MeasureSky;
using host::SampleStatistics;

COrbImage NoiseImage(int width, int height, double level, double noise, unsigned seed) {
  COrbImage image(-32, width, height, 1, 1.0, 0.0, 1, nullptr, nullptr);
  std::mt19937 random(seed);
  std::normal_distribution<double> normal(level, noise);
  std::vector<float> samples(static_cast<std::size_t>(width) * height);
  for (float& sample : samples) sample = static_cast<float>(normal(random));
  SetSamples(image, samples);
  return image;
}

TEST(ClipSamples, FindsLevelAndNoiseOfANormalDistribution) {
  COrbImage image = NoiseImage(300, 300, 1000.0, 30.0, 1);
  std::vector<float> samples = SamplesOf(image);
  SampleStatistics const found = ClipSamples(samples);
  EXPECT_NEAR(1000.0, found.level, 0.6);
  EXPECT_NEAR(30.0, found.noise, 0.4);
  EXPECT_GT(found.samples, 89000);
  EXPECT_LE(found.samples, 90000);
}

TEST(ClipSamples, StarsDoNotCount) {
  COrbImage image = NoiseImage(300, 300, 1000.0, 30.0, 2);
  std::vector<float> samples = SamplesOf(image);
  for (std::size_t i = 0; i < samples.size(); i += 20) samples[i] += 5000.0f;
  SampleStatistics const found = ClipSamples(samples);
  EXPECT_NEAR(1000.0, found.level, 0.8);
  EXPECT_NEAR(30.0, found.noise, 0.6);
}

TEST(ClipSamples, WholeNumbersDoNotSpoilTheNoise) {
  COrbImage image = NoiseImage(200, 200, 100.0, 1.2, 3);
  std::vector<float> samples = SamplesOf(image);
  for (float& sample : samples) sample = std::round(sample);
  SampleStatistics const found = ClipSamples(samples);
  EXPECT_NEAR(std::sqrt(1.2 * 1.2 + 1.0 / 12.0), found.noise, 0.05);
}

TEST(ClipSamples, OnlyFiniteSamplesCount) {
  float const inf = std::numeric_limits<float>::infinity();
  std::vector<float> samples = {std::nanf(""), 5.0f, inf, 7.0f, -inf, 6.0f};
  SampleStatistics const found = ClipSamples(samples);
  EXPECT_EQ(6.0, found.level);
  EXPECT_EQ(3, found.samples);
}

TEST(ClipSamples, EqualSamplesHaveNoNoise) {
  std::vector<float> samples(50, 4.5f);
  SampleStatistics const found = ClipSamples(samples);
  EXPECT_EQ(4.5, found.level);
  EXPECT_EQ(0.0, found.noise);
  EXPECT_EQ(50, found.samples);
}

TEST(ClipSamples, NothingGivesNothing) {
  std::vector<float> none;
  EXPECT_EQ(0, ClipSamples(none).samples);
  std::vector<float> bad(4, std::nanf(""));
  EXPECT_EQ(0, ClipSamples(bad).samples);
}

TEST(MeasureSky, AGradientIsNotNoise) {
  COrbImage image = NoiseImage(320, 256, 1000.0, 10.0, 4);
  for (int y = 0; y < 256; ++y) {
    for (int x = 0; x < 320; ++x) *image.GetImageAdr(x, y, 0, 0, nullptr) += 0.2f * x;
  }
  EXPECT_NEAR(1032.0, MeasureSky(image, 0, nullptr).level, 2.0);
  EXPECT_NEAR(10.0, MeasureSky(image, 0, nullptr).noise, 0.4);
}

TEST(MeasureSky, KeepsToTheRectangleAndThePlane) {
  COrbImage image(-32, 100, 80, 3, 1.0, 0.0, 1, nullptr, nullptr);
  for (int y = 20; y < 30; ++y) {
    for (int x = 10; x < 40; ++x) *image.GetImageAdr(x, y, 2, 0, nullptr) = 77.0f;
  }
  CRect rect(10, 20, 40, 30);
  EXPECT_EQ(77.0, MeasureSky(image, 2, &rect).level);
  EXPECT_EQ(300, MeasureSky(image, 2, &rect).samples);
  EXPECT_EQ(0.0, MeasureSky(image, 1, &rect).level);
}

TEST(MeasureSky, AnyRectangleIsSafe) {
  COrbImage image = NoiseImage(40, 30, 10.0, 1.0, 5);
  for (RectCase& c : RectCases(40, 30)) {
    SampleStatistics const found = MeasureSky(image, 0, c.Pointer());
    EXPECT_TRUE(found.samples == 0 || std::abs(found.level - 10.0) < 3.0) << c.name;
  }
}

}  // namespace
}  // namespace orb::test
