// CImgBright, CImgColorBalance, CImgReduceTone: formulas on the 256-scale, by the levels of the destination.
#include <cmath>
#include <limits>

#include <orbimg/tone/reduce_tone_kernels.h>
#include <tests/reference/bright_reference.h>
#include <tests/reference/color_balance_reference.h>
#include <tests/reference/reduce_tone_reference.h>
#include <tests/support/point_operator_test.h>

namespace orb::test {
namespace {

float Brightened(double brightness, double contrast, double pivot, float sample) {
  CImgBright image;
  image.CopyImage(MonoRow({sample}), nullptr, nullptr);
  image.Do(brightness, contrast, pivot, &image, nullptr, 0);
  return image.GetPixelGrayRaw(0, 0, 0);
}

float Posterised(int levels, float sample) {
  CImgReduceTone image;
  image.CopyImage(MonoRow({sample}), nullptr, nullptr);
  image.Do(levels, &image, nullptr, 0);
  return image.GetPixelGrayRaw(0, 0, 0);
}

TEST(Bright, NothingAskedForKeepsSamplesUpToRounding) {
  for (float v : {-300.0f, -1.0f, 0.0f, 77.25f, 255.0f, 60000.0f}) EXPECT_NEAR(v, Brightened(0, 0, 128, v), 1e-2);
}

TEST(Bright, ContrastOf256DoublesTheDistanceFromThePivot) {
  EXPECT_FLOAT_EQ(160.0f, Brightened(0.0, 256.0, 100.0, 130.0f));
  EXPECT_FLOAT_EQ(40.0f, Brightened(0.0, 256.0, 100.0, 70.0f));
  EXPECT_FLOAT_EQ(100.0f, Brightened(0.0, 256.0, 100.0, 100.0f));
  EXPECT_FLOAT_EQ(100.0f, Brightened(0.0, -256.0, 100.0, 30.0f));
}

TEST(Bright, AddsBrightnessWithoutClamping) {
  EXPECT_FLOAT_EQ(310.0f, Brightened(60.0, 0.0, 0.0, 250.0f));
  EXPECT_FLOAT_EQ(-50.0f, Brightened(-60.0, 0.0, 0.0, 10.0f));
}

// The levels of planes 1 and 2, and of the source, are of no effect.
TEST(Bright, PlaneZeroOfTheDestinationServesEveryPlane) {
  COrbImage src = ColourPixel(10.0f, 10.0f, 10.0f);
  src.CImage::SetLevel(0, 5.0, 6.0);
  CImgBright dst;
  dst.CopyImage(ColourPixel(0.0f, 0.0f, 0.0f), nullptr, nullptr);
  dst.CImage::SetLevel(0, 0.0, 510.0);
  dst.CImage::SetLevel(1, 40.0, 45.0);
  dst.CImage::SetLevel(2, -7.0, 1000.0);
  dst.Do(10.0, 0.0, 0.0, &src, nullptr, 0);
  for (int p = 0; p < 3; ++p) EXPECT_FLOAT_EQ(30.0f, dst.GetPixelGrayRaw(0, 0, p));
}

TEST(Bright, EqualsThePlainFormulaEverywhere) {
  Random random(1);
  for (auto const& [brightness, contrast, pivot] :
       {std::tuple(0.0, 0.0, 0.0), std::tuple(12.3, 77.7, 128.0), std::tuple(-400.0, -512.5, 300.1)}) {
    ExpectTheReference<CImgBright>(
        random,
        [=](CImgBright& dst, COrbImage* src, CRect* rect) { dst.Do(brightness, contrast, pivot, src, rect, 0); },
        [=](COrbImage& dst, COrbImage* src, CRect* rect) {
          reference::Bright(dst, brightness, contrast, pivot, *src, rect);
        });
  }
}

TEST(Bright, ProgressCountsRowsOfEveryPlane) {
  ExpectRowsOfEveryPlane<CImgBright>(
      "明るさ／コントラスト処理中...",
      [](CImgBright& dst, COrbImage* src, CRect* rect, int on) { dst.Do(1.0, 2.0, 3.0, src, rect, on); });
}

TEST(ColorBalance, AMonoImageTakesRedAlone) {
  CImgColorBalance image;
  image.CopyImage(MonoRow({10.0f}), nullptr, nullptr);
  image.Do(5.0, 50.0, 500.0, &image, nullptr, 0);
  EXPECT_FLOAT_EQ(15.0f, image.GetPixelGrayRaw(0, 0, 0));
}

TEST(ColorBalance, EachPlaneItsOffsetByTheLevelsOfPlaneZero) {
  CImgColorBalance image;
  image.CopyImage(ColourPixel(10.0f, 10.0f, 10.0f), nullptr, nullptr);
  image.CImage::SetLevel(0, 0.0, 510.0);
  image.CImage::SetLevel(1, 40.0, 45.0);
  image.Do(5.0, -50.0, 500.0, &image, nullptr, 0);
  EXPECT_FLOAT_EQ(20.0f, image.GetPixelGrayRaw(0, 0, 0));
  EXPECT_FLOAT_EQ(-90.0f, image.GetPixelGrayRaw(0, 0, 1));
  EXPECT_FLOAT_EQ(1010.0f, image.GetPixelGrayRaw(0, 0, 2));
}

TEST(ColorBalance, EqualsThePlainFormulaEverywhere) {
  Random random(2);
  ExpectTheReference<CImgColorBalance>(
      random, [](CImgColorBalance& dst, COrbImage* src, CRect* rect) { dst.Do(1.1, -22.2, 333.3, src, rect, 0); },
      [](COrbImage& dst, COrbImage* src, CRect* rect) { reference::Balance(dst, 1.1, -22.2, 333.3, *src, rect); });
}

TEST(ColorBalance, ProgressCountsRowsOfEveryPlane) {
  ExpectRowsOfEveryPlane<CImgColorBalance>(
      "カラーバランス処理中...",
      [](CImgColorBalance& dst, COrbImage* src, CRect* rect, int on) { dst.Do(1.0, 2.0, 3.0, src, rect, on); });
}

TEST(ReduceTone, TheTopStepIsBelowFullScale) {
  EXPECT_EQ(127.5f, Posterised(2, 255.0f));
  EXPECT_EQ(127.5f, Posterised(2, 1e9f));
  EXPECT_EQ(127.5f, Posterised(2, 128.0f));
  EXPECT_EQ(0.0f, Posterised(2, 127.9f));
  EXPECT_EQ(0.0f, Posterised(2, -1e9f));
  EXPECT_FLOAT_EQ(191.25f, Posterised(4, 255.0f));
}

TEST(ReduceTone, OneLevelIsTheLowerLevel) {
  CImgReduceTone image;
  image.CopyImage(MonoRow({-10.0f, 10.0f, 300.0f}), nullptr, nullptr);
  image.SetLevel(0, 3.0, 200.0);
  image.Do(1, &image, nullptr, 0);
  EXPECT_EQ(std::vector<float>(3, 3.0f), SamplesOf(image));
}

TEST(ReduceTone, TheNumberOfLevelsIsHeld) {
  for (float v : {0.0f, 1.0f, 99.9f, 254.0f, 255.0f, 300.0f}) {
    EXPECT_EQ(Posterised(256, v), Posterised(1000, v));
    EXPECT_EQ(Posterised(1, v), Posterised(0, v));
    EXPECT_EQ(Posterised(1, v), Posterised(-5, v));
  }
  EXPECT_NE(Posterised(255, 255.0f), Posterised(256, 255.0f));
}

// The quotient step / n is taken without a division; here are all there are.
TEST(ReduceTone, EveryStepOfEveryNumberOfLevelsIsExact) {
  for (int n = 1; n <= 256; ++n) {
    COrbImage src(-32, 256, 1, 1, 1.0, 0.0, 1, nullptr, nullptr);
    for (int x = 0; x < 256; ++x) src.SetPixelGrayRaw(x, 0, static_cast<float>((x % n + 0.5) * 256.0 / n), 0);
    CImgReduceTone dst;
    dst.CopyImage(src, nullptr, nullptr);
    COrbImage expected(src);
    for (COrbImage* each : {static_cast<COrbImage*>(&dst), &expected}) each->SetLevel(0, 0.0, 255.0 + 1e-10);
    reference::ReduceTone(expected, n, src, nullptr);
    dst.Do(n, &src, nullptr, 0);
    EXPECT_TRUE(SameBits(expected, dst)) << n;
  }
}

// Samples on every tone, on both limits and beyond them, and one that is not a number, with these levels.
void ExpectEveryToneOf(int n, double min, double max) {
  COrbImage src(-32, 260, 1, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (int x = 0; x < 260; ++x) {
    double const share = (x % n + 0.5) / n;
    src.SetPixelGrayRaw(x, 0, static_cast<float>(share * (max - min) * 256.0 / 255.0 + min), 0);
  }
  src.SetPixelGrayRaw(256, 0, static_cast<float>(min), 0);
  src.SetPixelGrayRaw(257, 0, std::numeric_limits<float>::quiet_NaN(), 0);
  src.SetPixelGrayRaw(258, 0, -1e38f, 0);
  src.SetPixelGrayRaw(259, 0, 1e38f, 0);
  CImgReduceTone dst;
  dst.CopyImage(src, nullptr, nullptr);
  COrbImage expected(src);
  for (COrbImage* each : {static_cast<COrbImage*>(&dst), &expected}) each->SetLevel(0, min, max);
  reference::ReduceTone(expected, n, src, nullptr);
  dst.Do(n, &src, nullptr, 0);
  EXPECT_TRUE(SameBits(expected, dst)) << n << ' ' << min << ' ' << max;
}

// 1 + 3 * 2^-24 lies in the middle between two floats, where the last bit of a double decides.
TEST(ReduceTone, TheShortFormIsLeftWhereItWouldRoundOtherwise) {
  double const middle = 1.0 + std::ldexp(3.0, -24);
  int shortScales = 0;
  for (int n = 1; n <= 256; ++n) {
    shortScales += orb::ToneScale({0.0, n * middle}, n).IsShort() ? 1 : 0;
    ExpectEveryToneOf(n, 0.0, n * middle);
  }
  EXPECT_GT(shortScales, 0);
  EXPECT_LT(shortScales, 256);
}

TEST(ReduceTone, TheShortFormServesUsualLevels) {
  int shortScales = 0;
  for (int n = 1; n <= 256; ++n) {
    shortScales += orb::ToneScale({900.0, 600.0}, n).IsShort() ? 1 : 0;
    ExpectEveryToneOf(n, 900.0, 1500.0);
  }
  EXPECT_GT(shortScales, 200);
}

TEST(ReduceTone, UnusualLevelsTakeThePlainFormula) {
  double const infinite = std::numeric_limits<double>::infinity();
  for (int n : {1, 2, 37, 256}) {
    ExpectEveryToneOf(n, -0.0, -255.0);
    ExpectEveryToneOf(n, 255.0, 0.0);
    ExpectEveryToneOf(n, -0.0, 255.0);
    ExpectEveryToneOf(n, 7.0, 7.0);
    ExpectEveryToneOf(n, 0.0, 1e-320);
    ExpectEveryToneOf(n, 0.0, infinite);
    ExpectEveryToneOf(n, -1e308, 1e308);
  }
}

TEST(ReduceTone, EqualsThePlainFormulaEverywhere) {
  Random random(3);
  for (int levels : {0, 2, 3, 37, 255, 256, 1000}) {
    ExpectTheReference<CImgReduceTone>(
        random, [=](CImgReduceTone& dst, COrbImage* src, CRect* rect) { dst.Do(levels, src, rect, 0); },
        [=](COrbImage& dst, COrbImage* src, CRect* rect) { reference::ReduceTone(dst, levels, *src, rect); });
  }
}

TEST(ReduceTone, ProgressCountsRowsOfEveryPlane) {
  ExpectRowsOfEveryPlane<CImgReduceTone>(
      "階調減処理中...", [](CImgReduceTone& dst, COrbImage* src, CRect* rect, int on) { dst.Do(5, src, rect, on); });
}

}  // namespace
}  // namespace orb::test
