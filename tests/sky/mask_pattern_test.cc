// CImgMaskPattern: the mask and the blanking through it.
#include <limits>

#include <tests/reference/mask_pattern_reference.h>
#include <tests/support/point_operator_test.h>

namespace orb::test {
namespace {

CImgMaskPattern MaskOf(COrbImage const& image, double threshold) {
  CImgMaskPattern mask;
  mask.CopyImage(image, nullptr, nullptr);
  mask.Make(threshold, 0);
  return mask;
}

COrbImage Constant(int width, int height, int planes, float value) {
  COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, std::vector<float>(static_cast<std::size_t>(image.GetPixelCount()), value));
  return image;
}

TEST(MaskPattern, MakeEqualsThePlainFormula) {
  Random random(1);
  for (int planes : {1, 3}) {
    for (int width = 1; width <= 40; ++width) {
      COrbImage image = RandomImage(random, width, 1 + width % 12, planes);
      StrewSpecialSamples(image, random);
      for (double threshold : {0.0, 55.5, -1e300, 1e300, std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN()}) {
        COrbImage expected(image);
        reference::MakeMask(expected, threshold);
        CImgMaskPattern const mask = MaskOf(image, threshold);
        EXPECT_TRUE(SameBits(expected, mask)) << width << ' ' << threshold;
        EXPECT_TRUE(SameLevels(image, mask));
      }
    }
  }
}

TEST(MaskPattern, TheMaximumAsThresholdMakesEverySampleOne) {
  Random random(2);
  COrbImage image = RandomImage(random, 30, 20, 3);
  double most = 0.0;
  for (float v : SamplesOf(image)) most = std::max(most, static_cast<double>(v));
  for (float v : SamplesOf(MaskOf(image, most))) EXPECT_EQ(1.0f, v);
}

TEST(MaskPattern, ASampleAtTheThresholdBecomesOne) {
  CImgMaskPattern const mask = MaskOf(MonoRow({9.0f, 10.0f, 11.0f}), 10.0);
  EXPECT_TRUE(SameBits(std::vector<float>{1.0f, 1.0f, 0.0f}, SamplesOf(mask)));
}

TEST(MaskPattern, IntendedTheThresholdIsNotRoundedToASample) {
  float const v = 16777216.0f;
  // Rounded to a float it would be the sample itself.
  EXPECT_EQ(0.0f, SamplesOf(MaskOf(MonoRow({v}), 16777215.9))[0]);
  EXPECT_EQ(1.0f, SamplesOf(MaskOf(MonoRow({v}), 16777216.1))[0]);
}

TEST(MaskPattern, MakeOnAHostileStore) {
  Random random(3);
  COrbImage image = RandomImage(random, 17, 9, 3);
  CImgMaskPattern hostile;
  hostile.CopyImage(image, nullptr, nullptr);
  MakeHostile(hostile);
  hostile.Make(100.0, 0);
  EXPECT_TRUE(SameBits(MaskOf(image, 100.0), hostile));
  EXPECT_EQ(0, LocksLeft(hostile));
}

struct Placed {
  double dx;
  double dy;
  double angle;
};

void Blank(CImgMaskPattern& image, COrbImage& mask, Placed const& at) { image.Do(&mask, at.dx, at.dy, at.angle, 0); }

// Large stretches of zeros and ones with single samples between, and values between 0 and 1.
COrbImage RandomMask(Random& random, int width, int height, int planes) {
  COrbImage mask = RandomImage(random, width, height, planes);
  std::vector<float> samples = SamplesOf(mask);
  std::uniform_int_distribution<int> chance(0, 99);
  float value = 1.0f;
  for (float& v : samples) {
    if (chance(random) < 3) value = 1.0f - value;
    v = value;
    if (chance(random) < 2) v = 0.5f;
    if (chance(random) < 2) v = -0.0f;
    if (chance(random) < 1) v = std::numeric_limits<float>::denorm_min();
  }
  SetSamples(mask, samples);
  return mask;
}

TEST(MaskPattern, BlankingEqualsThePlainFormulaEverywhere) {
  Random random(4);
  for (int width : {1, 2, 3, 16, 31, 40, 63, 64, 65, 128, 300}) {
    int const height = 1 + width % 12;
    for (int planes : {1, 3}) {
      for (int maskPlanes : {1, 3}) {
        COrbImage const image = RandomImage(random, width, height, planes);
        COrbImage mask = RandomMask(random, width + 2, std::max(height - 1, 2), maskPlanes);
        if (width == 40) StrewSpecialSamples(mask, random);
        mask.SetStdCtr(width / 2.0, height / 2.0);
        for (Placed const& at : {Placed{0, 0, 0}, Placed{3, -2, 0}, Placed{0.25, 0.75, 0}, Placed{0, 0, 90},
                                 Placed{-1.5, 2.0, 7.5}, Placed{1e9, 0, 0}, Placed{0, 0, 360}}) {
          COrbImage expected(image);
          reference::BlankThroughMask(expected, mask, at.dx, at.dy, at.angle);
          CImgMaskPattern dst;
          dst.CopyImage(image, nullptr, nullptr);
          CImgMaskPattern hostile(dst);
          COrbImage hostileMask(mask);
          MakeHostile(hostile);
          MakeHostile(hostileMask);
          Blank(dst, mask, at);
          Blank(hostile, hostileMask, at);
          EXPECT_TRUE(SameBits(expected, dst)) << width << ' ' << at.dx << ' ' << at.angle;
          EXPECT_TRUE(SameBits(expected, hostile));
          EXPECT_TRUE(SameLevels(image, dst));
          EXPECT_EQ(0, LocksLeft(hostile) + LocksLeft(hostileMask));
        }
      }
    }
  }
}

TEST(MaskPattern, AMaskOfOnesLeavesTheImage) {
  Random random(5);
  CImgMaskPattern image;
  image.CopyImage(RandomImage(random, 70, 11, 3), nullptr, nullptr);
  COrbImage const before(image);
  COrbImage mask = Constant(70, 11, 1, 1.0f);
  Blank(image, mask, {0, 0, 0});
  EXPECT_TRUE(SameBits(before, image));
}

TEST(MaskPattern, AMaskOfZerosBlanksTheImage) {
  Random random(6);
  CImgMaskPattern image;
  image.CopyImage(RandomImage(random, 70, 11, 3), nullptr, nullptr);
  COrbImage mask = Constant(70, 11, 1, 0.0f);
  Blank(image, mask, {0, 0, 0});
  EXPECT_TRUE(SameBits(Constant(70, 11, 3, 0.0f), image));
}

TEST(MaskPattern, WhatFallsOutsideTheMaskIsBlanked) {
  CImgMaskPattern image;
  image.CopyImage(MonoRow({5.0f, 6.0f, 7.0f, 8.0f}), nullptr, nullptr);
  COrbImage mask = MonoRow({1.0f, 1.0f, 1.0f});
  Blank(image, mask, {2, 0, 0});
  EXPECT_TRUE(SameBits(std::vector<float>{0.0f, 0.0f, 7.0f, 8.0f}, SamplesOf(image)));
}

TEST(MaskPattern, IntendedValuesBetweenZeroAndOneKeepTheSample) {
  CImgMaskPattern image;
  image.CopyImage(MonoRow({5.0f, 6.0f, 7.0f, 8.0f}), nullptr, nullptr);
  COrbImage mask = MonoRow({0.0f, 0.0f, 1.0f, 1.0f});
  // Half a column to the left: the second sample sees half of the third of the mask.
  Blank(image, mask, {-0.5, 0, 0});
  EXPECT_TRUE(SameBits(std::vector<float>{0.0f, 6.0f, 7.0f, 8.0f}, SamplesOf(image)));
}

TEST(MaskPattern, IntendedPlaneZeroOfTheMaskServesAllPlanes) {
  COrbImage mask = Constant(2, 1, 3, 0.0f);
  mask.SetPixelGrayRaw(0, 0, 1.0f, 0);
  mask.SetPixelGrayRaw(1, 0, 1.0f, 1);
  mask.SetPixelGrayRaw(1, 0, 1.0f, 2);
  CImgMaskPattern image;
  image.CopyImage(Constant(2, 1, 3, 9.0f), nullptr, nullptr);
  Blank(image, mask, {0, 0, 0});
  EXPECT_TRUE(SameBits(std::vector<float>{9.0f, 0.0f, 9.0f, 0.0f, 9.0f, 0.0f}, SamplesOf(image)));
}

TEST(MaskPattern, ProgressCountsRowsOfEveryPlane) {
  for (int planes : {1, 3}) {
    CImgMaskPattern image;
    image.CopyImage(Constant(4, 6, planes, 3.0f), nullptr, nullptr);
    COrbImage mask = Constant(4, 6, 1, 1.0f);
    RecordingWindow window;
    window.escapeAtPoll = 2;
    image.SetProgressHandle(&window);
    image.Make(1.0, 0);
    image.Do(&mask, 0, 0, 0, 0);
    EXPECT_TRUE(window.IsSilent());
    image.Make(1.0, 1);
    EXPECT_EQ(6 * planes, window.polls);
    image.Do(&mask, 0, 0, 0, 1);
    EXPECT_EQ(12 * planes, window.polls);
    EXPECT_EQ((std::vector<std::string>{"マスクパターン作成中...", "マスクパターン処理中..."}), window.starts);
    EXPECT_EQ((std::vector<std::string>{"(null)", "(null)"}), window.ends);
    EXPECT_EQ(static_cast<std::size_t>(12 * planes), window.positions.size());
  }
}

}  // namespace
}  // namespace orb::test
