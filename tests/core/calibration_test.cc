// Dark and flat.
#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/calibration_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

COrbImage ImageOf(int width, int height, int planes, std::vector<float> const& samples) {
  COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, samples);
  return image;
}

void Sprinkle(COrbImage& image, Random& random, std::vector<float> const& specials) {
  std::vector<float> samples = SamplesOf(image);
  std::uniform_int_distribution<std::size_t> pick(0, 60);
  for (float& v : samples) {
    std::size_t const k = pick(random);
    if (k < specials.size()) v = specials[k];
  }
  SetSamples(image, samples);
}

// Calls each(image, frame) for shapes of every kind, the frame mono or of the image's planes, with ordinary samples and
// with special ones.
template <typename Each>
void EachShape(Random& random, std::vector<float> const& specials, Each each) {
  for (int planes : {1, 3}) {
    for (int framePlanes : {1, 3}) {
      if (framePlanes > planes) continue;
      for (int width : {1, 2, 5, 16, 33, 40, 256, 771}) {
        for (int height : {1, 2, 11}) {
          COrbImage image = RandomImage(random, width, height, planes);
          COrbImage frame = RandomImage(random, width, height, framePlanes);
          each(image, frame);
          Sprinkle(image, random, {kNan, kInfinity, -kInfinity, -0.0f, 0.0f, 3.4e38f, -3.4e38f, 1e-45f, -1e-38f});
          Sprinkle(frame, random, specials);
          each(image, frame);
        }
      }
    }
  }
}

TEST(Flat, WorkedExample) {
  // Sum 16 over (2 - 1) and (4 - 1): a = 16 / 3 as a float.
  COrbImage flat = ImageOf(2, 4, 1, {1, 2, 3, 4, 0, -2, 5, 3});
  COrbImage image = ImageOf(2, 4, 1, {10, 10, 10, 10, 10, 10, 10, 10});
  auto const a = static_cast<double>(static_cast<float>(16.0 / 3.0));
  image.FlatClbrtn(&flat, 0);
  EXPECT_EQ(static_cast<float>(10.0 * a / 1.0), image.GetPixelGrayRaw(0, 0, 0));
  EXPECT_EQ(static_cast<float>(10.0 * a / 3.0), image.GetPixelGrayRaw(0, 1, 0));
  EXPECT_EQ(static_cast<float>(10.0 * a / 5.0), image.GetPixelGrayRaw(0, 3, 0));
}

TEST(Flat, SamplesAtOrBelowZeroLeaveThePixel) {
  COrbImage flat = ImageOf(3, 2, 1, {0, -2, kNan, -0.0f, 1, -kInfinity});
  COrbImage image = ImageOf(3, 2, 1, {10, 11, 12, 13, 14, 15});
  flat.SetPixelGrayRaw(2, 0, -1.0f, 0);  // the mean must be a number
  flat.SetPixelGrayRaw(2, 1, 8.0f, 0);
  image.FlatClbrtn(&flat, 0);
  EXPECT_EQ(10.0f, image.GetPixelGrayRaw(0, 0, 0));
  EXPECT_EQ(11.0f, image.GetPixelGrayRaw(1, 0, 0));
  EXPECT_EQ(12.0f, image.GetPixelGrayRaw(2, 0, 0));
  EXPECT_EQ(13.0f, image.GetPixelGrayRaw(0, 1, 0));
  EXPECT_EQ(14.0f * 3.0f, image.GetPixelGrayRaw(1, 1, 0));
}

TEST(Flat, MultipliesBeforeItDivides) {
  // 21 * 8388617 / 7 is 25165851, half way between two floats; the quotient 8388617 / 7 would be rounded before.
  COrbImage flat = ImageOf(2, 2, 1, {7, 8388610, 0, 0});
  COrbImage image = ImageOf(2, 2, 1, {21, 1, 1, 1});
  ASSERT_NE(25165852.0f, static_cast<float>(21.0 * (8388617.0 / 7.0)));
  image.FlatClbrtn(&flat, 0);
  EXPECT_EQ(25165852.0f, image.GetPixelGrayRaw(0, 0, 0));
}

TEST(Flat, MeanOfPlaneZeroServesAllPlanes) {
  COrbImage flat = ImageOf(2, 2, 3, {1, 1, 1, 1, 7, 7, 7, 7, 100, 100, 100, 100});
  COrbImage image = ImageOf(2, 2, 3, std::vector<float>(12, 700.0f));
  image.FlatClbrtn(&flat, 0);
  EXPECT_EQ(2800.0f, image.GetPixelGrayRaw(0, 0, 0));
  EXPECT_EQ(400.0f, image.GetPixelGrayRaw(0, 0, 1));
  EXPECT_EQ(28.0f, image.GetPixelGrayRaw(0, 0, 2));
}

TEST(Flat, SampleThatIsNotANumberLeavesThePixel) {
  COrbImage flat = ImageOf(2, 2, 3, {1, 1, 1, 1, kNan, 2, 2, 2, 4, 4, 4, 4});
  COrbImage image = ImageOf(2, 2, 3, std::vector<float>(12, 8.0f));
  image.FlatClbrtn(&flat, 0);
  EXPECT_EQ((std::vector<float>{32, 32, 32, 32, 8, 16, 16, 16, 8, 8, 8, 8}), SamplesOf(image));
}

TEST(Flat, WithAZeroMeanGivesZero) {
  COrbImage flat = ImageOf(2, 2, 1, {1, -1, 2, -2});
  COrbImage image = ImageOf(2, 2, 1, {5, 6, 7, 8});
  image.FlatClbrtn(&flat, 0);
  EXPECT_EQ((std::vector<float>{0, 6, 0, 8}), SamplesOf(image));
}

TEST(Flat, EqualsThePlainFormulaEverywhere) {
  Random random(1);
  // Nothing that makes the mean not-a-number: which of two such operands a product keeps is the compiler's choice.
  std::vector<float> const specials = {kInfinity, -0.0f, 0.0f, 3e38f, 1e-45f, -1e-38f, 1e-30f};
  EachShape(random, specials, [](COrbImage& image, COrbImage& flat) {
    COrbImage expected(image);
    reference::FlatClbrtn(expected, flat, flat.GetAvrGrayRaw(0));
    COrbImage found(image);
    found.FlatClbrtn(&flat, 0);
    EXPECT_TRUE(SameValues(expected, found)) << image.GetWidth() << 'x' << image.GetHeight();
    EXPECT_TRUE(SameLevels(expected, found));
  });
}

TEST(Flat, ByItselfGivesItsMean) {
  COrbImage image = ImageOf(3, 3, 1, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  image.FlatClbrtn(&image, 0);
  EXPECT_EQ(std::vector<float>(9, 45.0f / 4.0f), SamplesOf(image));
}

TEST(Flat, ProgressCountsRowsOfEveryPlane) {
  RecordingWindow window;
  COrbImage flat(-32, 4, 6, 1, 1.0, 0.0, 1, nullptr, nullptr);
  COrbImage image(-32, 4, 6, 3, 1.0, 0.0, 1, nullptr, nullptr);
  image.SetProgressHandle(&window);
  image.FlatClbrtn(&flat, 0);
  EXPECT_TRUE(window.IsSilent());
  image.FlatClbrtn(&flat, 1);
  EXPECT_EQ(std::vector<std::string>{"フラット補正処理中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(18, OrbTestAccess::ProgressOf(image).total);
  EXPECT_EQ(18, window.polls);
}

TEST(Dark, NoNegativeDifferenceSurvives) {
  COrbImage dark = ImageOf(5, 1, 1, {3, 5, 9, kNan, -2});
  COrbImage image = ImageOf(5, 1, 1, {5, 5, 5, 5, 5});
  image.DarkClbrtn(&dark, 0);
  EXPECT_TRUE(SameBits(std::vector<float>{2, 0, 0, 0, 7}, SamplesOf(image)));
}

TEST(Dark, EqualsThePlainFormulaEverywhere) {
  Random random(2);
  std::vector<float> const specials = {kNan, kInfinity, -kInfinity, -0.0f, 0.0f, 3.4e38f, -3.4e38f, 1e-45f, -1e-38f};
  EachShape(random, specials, [](COrbImage& image, COrbImage& dark) {
    COrbImage expected(image);
    reference::DarkClbrtn(expected, dark);
    COrbImage found(image);
    found.DarkClbrtn(&dark, 0);
    EXPECT_TRUE(SameBits(expected, found)) << image.GetWidth() << 'x' << image.GetHeight();
    EXPECT_TRUE(SameLevels(expected, found));
  });
}

TEST(Dark, RoundsLikeADifferenceTakenInDouble) {
  // Exponents of every distance, down to the smallest floats.
  Random random(3);
  std::uniform_real_distribution<float> mantissa(-2.0f, 2.0f);
  std::uniform_int_distribution<int> exponent(-149, 126);
  COrbImage image(-32, 200, 200, 1, 1.0, 0.0, 1, nullptr, nullptr);
  COrbImage dark(image);
  for (int y = 0; y < 200; ++y) {
    for (int x = 0; x < 200; ++x) {
      int const e = exponent(random);
      image.SetPixelGrayRaw(x, y, std::ldexp(mantissa(random), e), 0);
      dark.SetPixelGrayRaw(x, y, std::ldexp(mantissa(random), std::max(e - x / 4, -149)), 0);
    }
  }
  COrbImage expected(image);
  reference::DarkClbrtn(expected, dark);
  image.DarkClbrtn(&dark, 0);
  EXPECT_TRUE(SameBits(expected, image));
}

TEST(Dark, OfItselfIsZero) {
  Random random(4);
  COrbImage image = RandomImage(random, 7, 5, 3);
  image.DarkClbrtn(&image, 0);
  EXPECT_EQ(std::vector<float>(7 * 5 * 3, 0.0f), SamplesOf(image));
}

TEST(Dark, ProgressCountsRowsOfEveryPlane) {
  RecordingWindow window;
  COrbImage dark(-32, 4, 6, 3, 1.0, 0.0, 1, nullptr, nullptr);
  COrbImage image(dark);
  image.SetProgressHandle(&window);
  image.DarkClbrtn(&dark, 0);
  EXPECT_TRUE(window.IsSilent());
  image.DarkClbrtn(&dark, 1);
  EXPECT_EQ(std::vector<std::string>{"ダーク補正処理中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(18, OrbTestAccess::ProgressOf(image).total);
  EXPECT_EQ(18, window.polls);
}

TEST(Calibration, WorksOnAHostileStore) {
  Random random(5);
  COrbImage image = RandomImage(random, 12, 7, 3);
  COrbImage frame = RandomImage(random, 12, 7, 1);
  COrbImage expected(image);
  expected.DarkClbrtn(&frame, 0);
  expected.FlatClbrtn(&frame, 0);
  MakeHostile(image);
  MakeHostile(frame);
  image.DarkClbrtn(&frame, 0);
  image.FlatClbrtn(&frame, 0);
  EXPECT_TRUE(SameBits(expected, image));
  EXPECT_EQ(0, LocksLeft(image));
  EXPECT_EQ(0, LocksLeft(frame));
}

}  // namespace
}  // namespace orb::test
