// CImgFilterMisc::BkgSmooth and Custom.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/filter_misc_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

CImgFilterMisc JunkLike(COrbImage const& src, Random& random) {
  CImgFilterMisc dst;
  dst.Create(src, nullptr, nullptr);
  SetRandomLevels(dst, random);
  FillJunk(dst);
  return dst;
}

// A mono image of one row with levels 0 to 1000 around its middle sample.
COrbImage MonoRow(std::vector<float> const& samples) {
  COrbImage image(-32, static_cast<int>(samples.size()), 1, 1, 1.0, 0.0, 1, nullptr, nullptr);
  image.SetLevel(0, 0.0, 1000.0);
  SetSamples(image, samples);
  return image;
}

float MiddleAfterBkgSmooth(COrbImage& src, double level, double strength) {
  CImgFilterMisc dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.BkgSmooth(level, 1, strength, &src, nullptr, 0);
  return dst.GetPixelGrayRaw(src.GetWidth() / 2, 0, 0);
}

TEST(BkgSmooth, EqualsThePlainFormulaEverywhere) {
  Random random(1);
  double const levels[] = {150.0, -80.0, 250.0, 1e4, -1e4};
  double const strengths[] = {1.0, 0.4, 3.0, 0.0, -0.5};
  int n = 0;
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 3, 9, 17, 40}) {
      for (int height : {1, 2, 7, 12}) {
        COrbImage src = RandomImage(random, width, height, planes);
        if (n % 4 == 1) StrewSpecialSamples(src, random);
        for (RectCase& c : RectCases(width, height)) {
          double const level = levels[n % 5];
          double const strength = strengths[n / 5 % 5];
          int const radius = n++ % 6 - 1;
          CImgFilterMisc dst = JunkLike(src, random);
          COrbImage expected(dst);
          reference::BkgSmooth(expected, level, radius, strength, src, c.Pointer());
          dst.BkgSmooth(level, radius, strength, &src, c.Pointer(), 0);
          EXPECT_TRUE(SameValues(expected, dst)) << c.name << ' ' << width << 'x' << height << 'x' << planes;
          EXPECT_TRUE(SameLevels(expected, dst));
        }
      }
    }
  }
}

TEST(BkgSmooth, StrengthZeroCopiesTheSource) {
  Random random(2);
  for (int planes : {1, 3}) {
    COrbImage src = RandomImage(random, 20, 9, planes);
    CImgFilterMisc dst = JunkLike(src, random);
    dst.BkgSmooth(200.0, 2, 0.0, &src, nullptr, 0);
    EXPECT_TRUE(SameBits(src, dst));
  }
}

TEST(BkgSmooth, StrengthAboveOneIsThePlainMeanFarBelowTheLevel) {
  COrbImage src = MonoRow({10, 40, 10});
  // The cross: its row neighbours 10 and 10, itself three times, as the single row mirrors onto itself.
  EXPECT_EQ(MiddleAfterBkgSmooth(src, 800.0, 1.0), MiddleAfterBkgSmooth(src, 800.0, 3.0));
  EXPECT_NEAR(28.0, MiddleAfterBkgSmooth(src, 800.0, 3.0), 1e-5);
}

TEST(BkgSmooth, FadesOverFivePercentOfTheRangeBelowTheLevel) {
  COrbImage at = MonoRow({0, 500, 0});  // mean 300
  EXPECT_EQ(500.0f, MiddleAfterBkgSmooth(at, 500.0, 1.0)) << "at the level: weight 0";
  EXPECT_EQ(500.0f, MiddleAfterBkgSmooth(at, 499.0, 1.0)) << "above the level";
  EXPECT_NEAR(460.0, MiddleAfterBkgSmooth(at, 550.0, 0.2), 1e-4) << "at the band's end: the full strength";
  EXPECT_NEAR(480.0, MiddleAfterBkgSmooth(at, 525.0, 0.2), 1e-4) << "in the middle of the band: half";
  EXPECT_NEAR(460.0, MiddleAfterBkgSmooth(at, 900.0, 0.2), 1e-4);
}

// A gray pixel of brightness 100 between black ones, radius 0: nothing but the weight of a mean of itself could tell,
// so the neighbours make the mean 60.
TEST(BkgSmooth, ColourFadesOverSixteenOfBrightness) {
  COrbImage src(-32, 3, 1, 3, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(src, {0, 100, 0, 0, 100, 0, 0, 100, 0});
  auto const middle = [&](double level, int plane) {
    CImgFilterMisc dst;
    dst.CopyImage(src, nullptr, nullptr);
    dst.BkgSmooth(level, 1, 1.0, &src, nullptr, 0);
    return dst.GetPixelGrayRaw(1, 0, plane);
  };
  for (int p = 0; p < 3; ++p) {
    EXPECT_EQ(100.0f, middle(99.0, p));
    EXPECT_NEAR(80.0, middle(108.0, p), 1e-4);
    EXPECT_NEAR(60.0, middle(116.0, p), 1e-4);
    EXPECT_NEAR(60.0, middle(200.0, p), 1e-4);
  }
}

TEST(BkgSmooth, ColourDecidesForAllPlanesByTheSourcesBrightness) {
  // Green alone is bright: brightness 117.4. Its red and blue are kept with it although they are dark.
  COrbImage src(-32, 3, 1, 3, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(src, {0, 10, 0, 0, 200, 0, 0, 20, 0});
  CImgFilterMisc dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.BkgSmooth(100.0, 1, 1.0, &src, nullptr, 0);
  EXPECT_EQ(10.0f, dst.GetPixelGrayRaw(1, 0, 0));
  EXPECT_EQ(20.0f, dst.GetPixelGrayRaw(1, 0, 2));
  dst.BkgSmooth(140.0, 1, 1.0, &src, nullptr, 0);
  EXPECT_NEAR(6.0, dst.GetPixelGrayRaw(1, 0, 0), 1e-5);
  // The level counts on the destination's plane 0.
  dst.CImage::SetLevel(0, 0.0, 510.0);
  dst.BkgSmooth(140.0, 1, 1.0, &src, nullptr, 0);
  EXPECT_EQ(10.0f, dst.GetPixelGrayRaw(1, 0, 0)) << "140 is 70 there";
}

TEST(BkgSmooth, AMonoSourceServesAColourImage) {
  Random random(3);
  COrbImage src = RandomImage(random, 20, 9, 1);
  CImgFilterMisc dst;
  dst.CopyImage(RandomImage(random, 20, 9, 3), nullptr, nullptr);
  COrbImage expected(dst);
  reference::BkgSmooth(expected, 150.0, 2, 0.8, src, nullptr);
  dst.BkgSmooth(150.0, 2, 0.8, &src, nullptr, 0);
  EXPECT_TRUE(SameBits(expected, dst));
}

TEST(Custom, EqualsThePlainSumEverywhere) {
  Random random(4);
  std::uniform_real_distribution<double> weight(-1.0, 1.0);
  int n = 0;
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 3, 9, 17, 40}) {
      for (int height : {1, 2, 7, 12}) {
        int const radius = n++ % 5;
        std::vector<double> weights(static_cast<std::size_t>((2 * radius + 1) * (2 * radius + 1)));
        for (double& w : weights) w = weight(random);
        COrbImage src = RandomImage(random, width, height, planes);
        for (RectCase& c : RectCases(width, height)) {
          CImgFilterMisc dst = JunkLike(src, random);
          COrbImage expected(dst);
          reference::Custom(expected, radius, weights.data(), src, c.Pointer());
          dst.Custom(radius, weights.data(), &src, c.Pointer(), 0);
          EXPECT_TRUE(SameBits(expected, dst)) << c.name << ' ' << width << 'x' << height << 'x' << planes;
          EXPECT_TRUE(SameLevels(expected, dst));
        }
      }
    }
  }
}

TEST(Custom, WeightsAreInRowOrderAndNotNormalized) {
  COrbImage src(-32, 3, 3, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(src, {1, 2, 4, 8, 16, 32, 64, 128, 256});
  CImgFilterMisc dst;
  dst.CopyImage(src, nullptr, nullptr);
  double weights[] = {3, 0, 0, 0, 0, 5, 0, 0, 0};
  dst.Custom(1, weights, &src, nullptr, 0);
  EXPECT_EQ(3.0f * 1 + 5.0f * 32, dst.GetPixelGrayRaw(1, 1, 0));
  double doubled[] = {2};
  dst.Custom(0, doubled, &src, nullptr, 0);
  EXPECT_EQ(512.0f, dst.GetPixelGrayRaw(2, 2, 0));
}

TEST(Custom, AKernelThatSumsToZeroGivesZeroOnAFlatImage) {
  COrbImage src(-32, 6, 5, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(src, std::vector<float>(30, 1234.0f));
  CImgFilterMisc dst;
  dst.CopyImage(src, nullptr, nullptr);
  double weights[] = {-1, -1, -1, -1, 8, -1, -1, -1, -1};
  dst.Custom(1, weights, &src, nullptr, 0);
  EXPECT_TRUE(SameBits(std::vector<float>(30, 0.0f), SamplesOf(dst)));
}

TEST(Custom, ANegativeRadiusGivesZero) {
  Random random(5);
  COrbImage src = RandomImage(random, 6, 5, 1);
  CImgFilterMisc dst = JunkLike(src, random);
  dst.Custom(-1, nullptr, &src, nullptr, 0);
  EXPECT_TRUE(SameBits(std::vector<float>(30, 0.0f), SamplesOf(dst)));
}

TEST(FilterMisc, ReportsItsRows) {
  Random random(6);
  COrbImage src = RandomImage(random, 5, 9, 3);
  CRect rect(1, 2, 4, 8);
  double weights[] = {1};
  for (bool isCustom : {false, true}) {
    RecordingWindow window;
    CImgFilterMisc dst = JunkLike(src, random);
    dst.SetProgressHandle(&window);
    isCustom ? dst.Custom(0, weights, &src, &rect, 0) : dst.BkgSmooth(100.0, 1, 1.0, &src, &rect, 0);
    EXPECT_TRUE(window.IsSilent());
    isCustom ? dst.Custom(0, weights, &src, &rect, 1) : dst.BkgSmooth(100.0, 1, 1.0, &src, &rect, 1);
    EXPECT_EQ(std::vector<std::string>{isCustom ? "カスタムフィルター処理中..." : "バックグランドスムース処理中..."},
              window.starts);
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
    EXPECT_EQ(isCustom ? 18 : 6, OrbTestAccess::ProgressOf(dst).total) << "rows of each plane; rows";
    EXPECT_EQ(isCustom ? 18 : 6, window.polls);
  }
}

TEST(FilterMisc, WorksOnAHostileStore) {
  Random random(7);
  COrbImage src = RandomImage(random, 30, 14, 3);
  double weights[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  CImgFilterMisc smooth = JunkLike(src, random);
  CImgFilterMisc custom(smooth);
  COrbImage expectedSmooth(smooth);
  COrbImage expectedCustom(smooth);
  reference::BkgSmooth(expectedSmooth, 200.0, 2, 1.0, src, nullptr);
  reference::Custom(expectedCustom, 1, weights, src, nullptr);
  for (COrbImage* each : {static_cast<COrbImage*>(&smooth), static_cast<COrbImage*>(&custom), &src}) MakeHostile(*each);
  smooth.BkgSmooth(200.0, 2, 1.0, &src, nullptr, 0);
  custom.Custom(1, weights, &src, nullptr, 0);
  EXPECT_TRUE(SameBits(expectedSmooth, smooth));
  EXPECT_TRUE(SameBits(expectedCustom, custom));
  for (COrbImage* each : {static_cast<COrbImage*>(&smooth), static_cast<COrbImage*>(&custom), &src}) {
    EXPECT_EQ(0, LocksLeft(*each));
  }
}

}  // namespace
}  // namespace orb::test
