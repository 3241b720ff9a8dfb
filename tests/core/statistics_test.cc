// Histogram, means and extrema of an image.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/statistics_reference.h>
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

// About one sample in eight becomes one that arithmetic treats in a way of its own.
void SprinkleSpecials(COrbImage& image, Random& random) {
  float const specials[] = {kNan, kInfinity, -kInfinity, -0.0f, 0.0f, 3e38f, -3e38f, 1e-45f};
  std::vector<float> samples = SamplesOf(image);
  std::uniform_int_distribution<int> pick(0, 63);
  for (float& v : samples) {
    int const k = pick(random);
    if (k < 8) v = specials[k];
  }
  SetSamples(image, samples);
}

std::vector<int> HistogramOf(COrbImage& image, int bins, double lo, double hi, int plane, CRect* rect = nullptr) {
  std::vector<int> hist(static_cast<std::size_t>(bins), -7);
  image.GetHistGram(hist.data(), bins, lo, hi, plane, rect, 0, 0);
  return hist;
}

TEST(Histogram, BoundsBelongToTheFirstAndTheLastClass) {
  COrbImage image = ImageOf(6, 1, 1, {10.0f, 20.0f, 9.999f, 20.001f, 15.0f, 19.999f});
  EXPECT_EQ((std::vector<int>{1, 0, 1, 2}), HistogramOf(image, 4, 10.0, 20.0, 0));
}

TEST(Histogram, ReturnsTwiceTheFlatCountOfTheWholeImage) {
  COrbImage image(-32, 512, 512, 1, 1.0, 0.0, 1, nullptr, nullptr);
  std::vector<int> hist(256);
  CRect rect(3, 4, 50, 60);
  CRect empty(3, 4, 3, 4);
  EXPECT_EQ(2048, image.GetHistGram(hist.data(), 256, 0.0, 1.0, 0, nullptr, 0, 0));
  EXPECT_EQ(2048, image.GetHistGram(hist.data(), 256, 0.0, 1.0, 0, &rect, 0, 0));
  EXPECT_EQ(2048, image.GetHistGram(hist.data(), 256, 0.0, 1.0, 0, &empty, 0, 0));
}

TEST(Histogram, ResultIsTakenInFloatingPointAndTruncated) {
  COrbImage image(-32, 10, 10, 1, 1.0, 0.0, 1, nullptr, nullptr);
  std::vector<int> hist(6);
  EXPECT_EQ(33, image.GetHistGram(hist.data(), 6, 0.0, 1.0, 0, nullptr, 0, 0));
}

TEST(Histogram, WithoutClassesNothingIsCounted) {
  RecordingWindow window;
  COrbImage image = ImageOf(2, 3, 1, {1, 2, 3, 4, 5, 6});
  image.SetProgressHandle(&window);
  int hist[1] = {-7};
  EXPECT_EQ(0, image.GetHistGram(hist, 0, 0.0, 10.0, 0, nullptr, 1, 0));
  EXPECT_EQ(-7, hist[0]);
  EXPECT_EQ(3, window.polls);
  image.GetHistGram(hist, -4, 0.0, 10.0, 0, nullptr, 0, 0);
  EXPECT_EQ(-7, hist[0]);
}

TEST(Histogram, PlaneThatDoesNotExistHasNoSamples) {
  COrbImage image = ImageOf(2, 1, 1, {1, 2});
  EXPECT_EQ((std::vector<int>{0, 0}), HistogramOf(image, 2, 0.0, 10.0, 1));
  EXPECT_EQ((std::vector<int>{0, 0}), HistogramOf(image, 2, 0.0, 10.0, -2));
}

TEST(Histogram, BrightnessOfOneOrTwoPlanesIsPlaneZero) {
  Random random(1);
  for (int planes : {1, 2}) {
    COrbImage image = RandomImage(random, 9, 5, planes);
    EXPECT_EQ(HistogramOf(image, 10, -50.0, 200.0, 0), HistogramOf(image, 10, -50.0, 200.0, -1));
  }
}

TEST(Histogram, BrightnessTakesItsBoundsInTermsOfPlaneZero) {
  // Every plane at half of its own levels: brightness 127.5, which plane 0 has at raw 150.
  COrbImage image = ImageOf(1, 1, 3, {150.0f, 20.0f, 3000.0f});
  image.CImage::SetLevel(0, 100.0, 200.0);
  image.CImage::SetLevel(1, 0.0, 40.0);
  image.CImage::SetLevel(2, 2000.0, 4000.0);
  EXPECT_EQ((std::vector<int>{0, 1}), HistogramOf(image, 2, 149.0, 150.9, -1));
  EXPECT_EQ((std::vector<int>{0, 0}), HistogramOf(image, 2, 150.1, 180.0, -1));
}

TEST(Histogram, BrightnessUsesLevelsThatWereRoundedToFloats) {
  // 0.7 as a float lies below 0.7: against the level in double the sample would be just below the lower bound.
  COrbImage image = ImageOf(1, 1, 3, {0.7f, 0.7f, 0.7f});
  for (int p = 0; p < 3; ++p) image.CImage::SetLevel(p, 0.7, 1.7);
  EXPECT_EQ((std::vector<int>{1, 0}), HistogramOf(image, 2, 0.7, 1.7, -1));
}

TEST(Histogram, BrightnessUsesScalesThatWereRoundedToFloats) {
  // 255 / 7 as a float lies below 255 / 7: the brightness of 7 is 254.99998856, and 255 with the scale in double.
  COrbImage image = ImageOf(1, 1, 3, {7.0f, 7.0f, 7.0f});
  for (int p = 0; p < 3; ++p) image.CImage::SetLevel(p, 0.0, 7.0);
  EXPECT_EQ((std::vector<int>{0, 0}), HistogramOf(image, 2, 6.9999998, 7.1, -1));
  EXPECT_EQ((std::vector<int>{1, 0}), HistogramOf(image, 2, 6.9999996, 7.1, -1));
}

TEST(Histogram, BrightnessIsSummedFromGreenOverBlueToRed) {
  // 11.376 in that order, just below it when red comes first; the bound is 11.376.
  COrbImage image = ImageOf(1, 1, 3, {11.0f, 13.0f, 4.0f});
  ASSERT_LT(0.299 * 11.0 + 0.587 * 13.0 + 0.114 * 4.0, 11.376);
  EXPECT_EQ((std::vector<int>{1, 0}), HistogramOf(image, 2, 11.376, 255.0, -1));
}

TEST(Histogram, ClassDividesBeforeItMultiplies) {
  // 58 / 100 * 50 is just below 29, while 58 * 50 / 100 is 29.
  COrbImage image = ImageOf(1, 1, 1, {58.0f});
  std::vector<int> const hist = HistogramOf(image, 50, 0.0, 100.0, 0);
  EXPECT_EQ(1, hist[28]);
  EXPECT_EQ(0, hist[29]);
}

TEST(Histogram, EqualsThePlainCountEverywhere) {
  Random random(2);
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 5, 16, 37}) {
      for (int height : {1, 4, 29}) {
        COrbImage image = RandomImage(random, width, height, planes);
        SprinkleSpecials(image, random);
        for (int bins : {1, 2, 7, 256, 5000}) {
          for (RectCase& c : RectCases(width, height)) {
            for (int plane = -1; plane < planes; ++plane) {
              std::vector<int> expected(static_cast<std::size_t>(bins));
              int const scale = reference::GetHistGram(image, expected.data(), bins, -60.3, 301.7, plane, c.Pointer());
              std::vector<int> hist(static_cast<std::size_t>(bins), -7);
              EXPECT_EQ(scale, image.GetHistGram(hist.data(), bins, -60.3, 301.7, plane, c.Pointer(), 0, 0));
              EXPECT_EQ(expected, hist) << c.name << ' ' << width << 'x' << height << " plane " << plane;
            }
          }
        }
      }
    }
  }
}

TEST(Histogram, EqualsThePlainCountForOddBounds) {
  Random random(3);
  COrbImage image = RandomImage(random, 33, 9, 3);
  SprinkleSpecials(image, random);
  double const bounds[] = {-1e300, -kInfinity, kInfinity, 0.0, 50.0, 50.0001, kNan, 3e38};
  for (double const lo : bounds) {
    for (double const hi : bounds) {
      for (int plane : {-1, 1}) {
        std::vector<int> expected(100);
        reference::GetHistGram(image, expected.data(), 100, lo, hi, plane, nullptr);
        EXPECT_EQ(expected, HistogramOf(image, 100, lo, hi, plane)) << lo << " to " << hi;
      }
    }
  }
}

TEST(Histogram, LongRowsCountLikeShortOnes) {
  Random random(10);
  for (int width : {1023, 1024, 1025, 2500}) {
    COrbImage image = RandomImage(random, width, 2, 3);
    for (int plane : {-1, 2}) {
      std::vector<int> expected(300);
      reference::GetHistGram(image, expected.data(), 300, -100.0, 400.0, plane, nullptr);
      EXPECT_EQ(expected, HistogramOf(image, 300, -100.0, 400.0, plane));
    }
  }
}

TEST(Histogram, ManyClassesCountLikeFew) {
  Random random(4);
  COrbImage image = RandomImage(random, 40, 12, 1);
  std::vector<int> expected(70000);
  reference::GetHistGram(image, expected.data(), 70000, -100.0, 400.0, 0, nullptr);
  EXPECT_EQ(expected, HistogramOf(image, 70000, -100.0, 400.0, 0));
}

TEST(Histogram, RowsAreTheUnitsAlsoForBrightness) {
  RecordingWindow window;
  COrbImage image(-32, 4, 6, 3, 1.0, 0.0, 1, nullptr, nullptr);
  image.SetProgressHandle(&window);
  std::vector<int> hist(10);
  CRect rect(0, 1, 4, 5);
  image.GetHistGram(hist.data(), 10, 0.0, 1.0, -1, &rect, 1, 0);
  EXPECT_EQ(std::vector<std::string>{"ヒストグラム計算中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(4, OrbTestAccess::ProgressOf(image).total);
  EXPECT_EQ(4, window.polls);
  image.GetHistGram(hist.data(), 10, 0.0, 1.0, 1, nullptr, 1, 6168);
  EXPECT_EQ("自動レベル設定中...", window.starts.back());
  EXPECT_EQ(6, OrbTestAccess::ProgressOf(image).total);
}

TEST(Histogram, RectangleBeyondTheImageGivesItsUnitsAsTheyStand) {
  RecordingWindow window;
  COrbImage image(-32, 4, 6, 1, 1.0, 0.0, 1, nullptr, nullptr);
  image.SetProgressHandle(&window);
  std::vector<int> hist(10);
  CRect below(0, 20, 4, 30);
  image.GetHistGram(hist.data(), 10, 0.0, 1.0, 0, &below, 1, 0);
  EXPECT_EQ(-14, OrbTestAccess::ProgressOf(image).total);  // 6 - 20: the top is not limited from above
  EXPECT_EQ(0, window.polls);
  EXPECT_EQ(1u, window.ends.size());
}

TEST(Histogram, ReversedExtremesOfTheRectangleCountNothing) {
  COrbImage image = ImageOf(2, 1, 1, {1, 2});
  int const low = std::numeric_limits<int>::min();
  int const high = std::numeric_limits<int>::max();
  CRect rect(high, high, low, low);
  EXPECT_EQ((std::vector<int>{0, 0}), HistogramOf(image, 2, 0.0, 10.0, 0, &rect));
}

TEST(Histogram, SilentWithoutProgress) {
  RecordingWindow window;
  COrbImage image(-32, 4, 6, 3, 1.0, 0.0, 1, nullptr, nullptr);
  image.SetProgressHandle(&window);
  HistogramOf(image, 10, 0.0, 1.0, -1);
  EXPECT_TRUE(window.IsSilent());
}

TEST(Histogram, WorksOnAHostileStore) {
  Random random(5);
  COrbImage image = RandomImage(random, 12, 7, 3);
  std::vector<int> const expected = HistogramOf(image, 30, -100.0, 400.0, -1);
  MakeHostile(image);
  EXPECT_EQ(expected, HistogramOf(image, 30, -100.0, 400.0, -1));
  EXPECT_EQ(0, LocksLeft(image));
}

TEST(Mean, DividesByOneLessThanWidthAndHeight) {
  COrbImage image = ImageOf(10, 10, 1, std::vector<float>(100, 1.0f));
  image.CImage::SetLevel(0, 0.25, 1.25);
  EXPECT_EQ(static_cast<float>(100.0 / 81.0), image.GetAvrGrayRaw(0));
  EXPECT_EQ(static_cast<float>(static_cast<float>(100.0 / 81.0) - 0.25), image.GetAvrGray(0));
  EXPECT_EQ(static_cast<float>((static_cast<float>(100.0 / 81.0) - 0.25) / 1.0 * 255.0), image.GetAvrGray256f(0));
}

TEST(Mean, OfOneColumnOrRowIsInfinite) {
  COrbImage column = ImageOf(1, 3, 1, {1, 2, 3});
  EXPECT_EQ(kInfinity, column.GetAvrGrayRaw(0));
  COrbImage row = ImageOf(3, 1, 1, {-1, -2, -3});
  EXPECT_EQ(-kInfinity, row.GetAvrGrayRaw(0));
  COrbImage zeros = ImageOf(3, 1, 1, {0, 0, 0});
  EXPECT_TRUE(std::isnan(zeros.GetAvrGrayRaw(0)));
}

TEST(Mean, TakesEachPlaneByItself) {
  COrbImage image = ImageOf(2, 2, 3, {1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 5});
  EXPECT_EQ(4.0f, image.GetAvrGrayRaw(0));
  EXPECT_EQ(8.0f, image.GetAvrGrayRaw(1));
  EXPECT_EQ(14.0f, image.GetAvrGrayRaw(2));
}

TEST(Mean, DiffersFromARunningSumByOneStepOfAFloatAtMost) {
  Random random(6);
  for (int width : {2, 3, 7, 15, 16, 17, 33, 40, 255, 256, 257, 1000}) {
    for (int height : {2, 3, 12, 200}) {
      COrbImage image = RandomImage(random, width, height, 1);
      float const expected = reference::GetAvrGrayRaw(image, 0);
      float const found = image.GetAvrGrayRaw(0);
      EXPECT_TRUE(found == expected || std::nextafter(expected, found) == found) << width << 'x' << height;
    }
  }
}

TEST(Mean, SumsInDouble) {
  // A running sum of floats would lose every one of the ones.
  std::vector<float> samples(9 * 9, 1.0f);
  samples[0] = 16777216.0f * 64;
  COrbImage image = ImageOf(9, 9, 1, samples);
  EXPECT_EQ(static_cast<float>((16777216.0 * 64 + 80) / 64.0), image.GetAvrGrayRaw(0));
}

TEST(Mean, WorksOnAHostileStore) {
  Random random(7);
  COrbImage image = RandomImage(random, 12, 7, 3);
  float const expected = image.GetAvrGrayRaw(2);
  MakeHostile(image);
  EXPECT_EQ(expected, image.GetAvrGrayRaw(2));
}

TEST(MinMax, StaleUntilTaken) {
  COrbImage image = ImageOf(2, 1, 1, {-3, 4});
  EXPECT_EQ(0.0, image.GetMinPixel(0));
  EXPECT_EQ(0.0, image.GetMaxPixel(0));
  image.CalcMinMax();
  image.SetPixelGrayRaw(0, 0, -30.0f, 0);
  EXPECT_EQ(-3.0, image.GetMinPixel(0));
  EXPECT_EQ(4.0, image.GetMaxPixel(0));
}

TEST(MinMax, EqualsThePlainSearchEverywhere) {
  Random random(8);
  for (int width : {1, 2, 7, 15, 16, 33, 63, 64, 65, 130}) {
    for (int height : {1, 3, 12}) {
      for (int round = 0; round < 4; ++round) {
        COrbImage image = RandomImage(random, width, height, 3);
        if (round > 0) SprinkleSpecials(image, random);
        image.CalcMinMax();
        for (int p = 0; p < 3; ++p) {
          double min = 0.0;
          double max = 0.0;
          reference::FindMinMax(image, p, min, max);
          if (std::isnan(min)) {
            EXPECT_TRUE(std::isnan(image.GetMinPixel(p)) && std::isnan(image.GetMaxPixel(p)));
            continue;
          }
          EXPECT_EQ(min, image.GetMinPixel(p));
          EXPECT_EQ(max, image.GetMaxPixel(p));
        }
      }
    }
  }
}

TEST(MinMax, WhatIsNotANumberIsPassedOverButNotAtTheOrigin) {
  COrbImage passed = ImageOf(4, 1, 1, {2, kNan, 1, 3});
  passed.CalcMinMax();
  EXPECT_EQ(1.0, passed.GetMinPixel(0));
  EXPECT_EQ(3.0, passed.GetMaxPixel(0));
  COrbImage first = ImageOf(4, 1, 1, {kNan, 2, 1, 3});
  first.CalcMinMax();
  EXPECT_TRUE(std::isnan(first.GetMinPixel(0)));
  EXPECT_TRUE(std::isnan(first.GetMaxPixel(0)));
}

TEST(MinMax, TheEarlierOfTwoZerosStays) {
  for (bool const negativeFirst : {false, true}) {
    for (std::size_t const at : {0u, 5u, 70u, 199u}) {
      std::vector<float> samples(300, 8.0f);
      samples[at] = negativeFirst ? -0.0f : 0.0f;
      samples[at + 1] = negativeFirst ? 0.0f : -0.0f;
      samples[at + 90] = -0.0f;
      COrbImage image = ImageOf(30, 10, 1, samples);
      image.CalcMinMax();
      EXPECT_EQ(negativeFirst, std::signbit(image.GetMinPixel(0))) << at;
      for (float& v : samples) v = v == 8.0f ? -8.0f : v;
      SetSamples(image, samples);
      image.CalcMinMax();
      EXPECT_EQ(negativeFirst, std::signbit(image.GetMaxPixel(0))) << at;
    }
  }
}

TEST(MinMax, OnlyThreePlanesHaveRoom) {
  Random random(9);
  COrbImage image = RandomImage(random, 5, 4, 6);
  CfPoint const point(3, 4);
  image.SetStdPt(0, point);
  image.CalcMinMax();
  double min = 0.0;
  double max = 0.0;
  reference::FindMinMax(image, 2, min, max);
  EXPECT_EQ(min, image.GetMinPixel(2));
  EXPECT_EQ(max, image.GetMaxPixel(2));
  EXPECT_EQ(3, image.GetStdPt(0).x);
}

TEST(MinMax, OfAnImageWithoutSamplesStays) {
  COrbImage image;
  OrbTestAccess::SetExtrema(image, 0, -1.0, 1.0);
  image.CalcMinMax();
  EXPECT_EQ(-1.0, image.GetMinPixel(0));
  EXPECT_EQ(1.0, image.GetMaxPixel(0));
}

}  // namespace
}  // namespace orb::test
