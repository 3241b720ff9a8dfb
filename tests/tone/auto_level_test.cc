// Levels from an image's own statistics.
#include <orbimg/tone/auto_level.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include <gtest/gtest.h>
#include <orbimg/core/rank_selection_internal.h>
#include <tests/reference/auto_level_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

CImgAutoLevel MonoOf(int width, int height, std::vector<float> const& samples) {
  CImgAutoLevel image;
  image.CopyImage(COrbImage(-32, width, height, 1, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  SetSamples(image, samples);
  return image;
}

CImgAutoLevel AutoLevelOf(COrbImage const& image) {
  CImgAutoLevel made;
  made.CopyImage(image, nullptr, nullptr);
  return made;
}

bool IsEmpty(RectCase const& c, COrbImage const& image) {
  return c.useRect && orb::ClampRect(&c.rect, image.GetWidth(), image.GetHeight()).IsEmpty();
}

// Levels that come from sums: the partial sums may differ from a running sum in the last bits.
void ExpectCloseLevels(COrbImage const& expected, COrbImage const& found, std::string const& name) {
  for (int p = 0; p < expected.GetPlanes(); ++p) {
    double const tolerance = 1e-12 * (1000.0 + std::abs(expected.GetLevelMax(p)));
    EXPECT_NEAR(expected.GetLevelMin(p), found.GetLevelMin(p), tolerance) << name << " plane " << p;
    EXPECT_NEAR(expected.GetLevelMax(p), found.GetLevelMax(p), tolerance) << name << " plane " << p;
  }
}

TEST(AutoLevel, FromZeroToOneIsTheWholeRange) {
  Random random(1);
  CImgAutoLevel image = AutoLevelOf(RandomImage(random, 20, 20, 1));
  image.CalcMinMax();
  image.Do(0.0, 1.0, 0, nullptr);
  EXPECT_EQ(image.GetMinPixel(0), image.GetLevelMin(0));
  EXPECT_EQ(image.GetMaxPixel(0), image.GetLevelMax(0));
}

TEST(AutoLevel, FractionsOutsideZeroToOneAreOfTheRange) {
  CImgAutoLevel image = MonoOf(3, 1, {10, 30, 20});
  image.Do(-0.5, 1.5, 0, nullptr);
  EXPECT_EQ(0.0, image.GetLevelMin(0));
  EXPECT_EQ(40.0, image.GetLevelMax(0));
  image.Do(1.0, 0.0, 0, nullptr);
  EXPECT_EQ(30.0, image.GetLevelMin(0));
  EXPECT_EQ(10.0, image.GetLevelMax(0));
}

TEST(AutoLevel, OfAConstantImageIsThatConstant) {
  for (double const low : {0.0, 0.3}) {
    CImgAutoLevel image = MonoOf(4, 4, std::vector<float>(16, 7.5f));
    image.Do(low, 1.0 - low, 0, nullptr);
    EXPECT_EQ(7.5, image.GetLevelMin(0));
    EXPECT_EQ(7.5, image.GetLevelMax(0));
  }
}

TEST(AutoLevel, EveryClassCountsOneMoreThanItsPixels) {
  // 5000 pixels, all but one in class 0; total 10000. The target of 0.6 is 6000: class 0 brings 5000 and every class
  // after it one, so that class 1001 is the first to exceed it.
  std::vector<float> samples(5000, 0.0f);
  samples.back() = 5000.0f;
  CImgAutoLevel image = MonoOf(100, 50, samples);
  image.Do(0.6, 1.0, 0, nullptr);
  EXPECT_EQ(1001 * 5000.0 * 0.0002, image.GetLevelMin(0));
  // Downward the target is trunc(0.4 * 10000) = 4000: the last class brings 2, so that class 1000 is the first.
  image.Do(0.0, 0.6, 0, nullptr);
  EXPECT_EQ((1000 + 1) * 5000.0 * 0.0002, image.GetLevelMax(0));
}

TEST(AutoLevel, WhiteTakesItsTargetFromOneMinusHigh) {
  // (1 - 0.9) * 10000 is just below 1000, truncated 999, while 10000 - 10000 * 0.9 is 1000.
  std::vector<float> samples(5000, 0.0f);
  samples.back() = 5000.0f;
  CImgAutoLevel image = MonoOf(100, 50, samples);
  image.Do(0.0, 0.9, 0, nullptr);
  // The last class brings 2 and every class before it one: class 4001 makes it 1000.
  EXPECT_EQ((4001 + 1) * 5000.0 * 0.0002, image.GetLevelMax(0));
}

TEST(AutoLevel, OnMonoPerPlaneMakesNoDifference) {
  Random random(2);
  CImgAutoLevel a = AutoLevelOf(RandomImage(random, 31, 17, 1));
  CImgAutoLevel b(a);
  a.Do(0.1, 0.9, 0, nullptr);
  b.Do(0.1, 0.9, 1, nullptr);
  EXPECT_TRUE(SameLevels(a, b));
}

TEST(AutoLevel, PlaneBoundsComeFromTheWholeImage) {
  // The rectangle's one sample is 50; the plane runs from 0 to 100.
  CImgAutoLevel image = MonoOf(3, 1, {0, 50, 100});
  CRect rect(1, 0, 2, 1);
  image.Do(0.0, 1.0, 0, &rect);
  EXPECT_EQ(0.0, image.GetLevelMin(0));
  EXPECT_EQ(100.0, image.GetLevelMax(0));
}

TEST(AutoLevel, BrightnessBoundsComeFromTheRectangle) {
  CImgAutoLevel image;
  image.CopyImage(COrbImage(-32, 3, 1, 3, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  SetSamples(image, {0, 50, 100, 0, 50, 100, 0, 50, 100});
  CRect rect(1, 0, 3, 1);
  image.Do(0.0, 1.0, 0, &rect);
  EXPECT_NEAR(50.0, image.GetLevelMin(0), 1e-12);
  EXPECT_NEAR(100.0, image.GetLevelMax(0), 1e-12);
}

TEST(AutoLevel, EqualsThePlainFormulaEverywhere) {
  Random random(3);
  double const fractions[][2] = {{0.01, 0.99}, {0.0, 1.0}, {0.5, 0.5}, {-0.2, 0.7}, {0.3, 1.2}, {0.999999, 0.000001}};
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 13, 40}) {
      for (int height : {1, 3, 30}) {
        COrbImage const src = RandomImage(random, width, height, planes);
        for (RectCase& c : RectCases(width, height)) {
          for (auto const& f : fractions) {
            for (int perPlane : {0, 1}) {
              COrbImage expected(src);
              reference::AutoLevel(expected, f[0], f[1], perPlane, c.Pointer());
              CImgAutoLevel found = AutoLevelOf(src);
              found.Do(f[0], f[1], perPlane, c.Pointer());
              EXPECT_TRUE(SameLevels(expected, found)) << c.name << ' ' << width << 'x' << height << 'x' << planes;
              EXPECT_TRUE(SameBits(src, found));
            }
          }
        }
      }
    }
  }
}

TEST(AutoLevel, ReportsForBrightnessOnly) {
  Random random(4);
  RecordingWindow window;
  CImgAutoLevel image = AutoLevelOf(RandomImage(random, 4, 6, 3));
  image.SetProgressHandle(&window);
  CRect rect(0, 1, 4, 5);
  image.Do(0.1, 0.9, 1, &rect);
  image.DoByMean(1.0, 1.0, 0, &rect);
  image.DoByMedian(1.0, 1.0, 0, &rect, 0.0);
  EXPECT_TRUE(window.IsSilent());
  image.Do(0.1, 0.9, 0, &rect);
  EXPECT_EQ(std::vector<std::string>{"自動レベル設定中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(4, OrbTestAccess::ProgressOf(image).total);
  EXPECT_EQ(4, window.polls);
}

TEST(AutoLevel, OfAnEmptyRectangleSetsNoLevels) {
  Random random(5);
  RecordingWindow window;
  COrbImage const src = RandomImage(random, 4, 6, 3);
  CImgAutoLevel image = AutoLevelOf(src);
  image.SetProgressHandle(&window);
  CRect rect(2, 2, 2, 2);
  image.Do(0.1, 0.9, 0, &rect);
  EXPECT_EQ(1u, window.starts.size());
  EXPECT_EQ(1u, window.ends.size());
  for (int perPlane : {0, 1}) {
    image.DoByMean(1.0, 1.0, perPlane, &rect);
    image.DoByMedian(1.0, 1.0, perPlane, &rect, 0.0);
  }
  EXPECT_TRUE(SameLevels(src, image));
}

TEST(AutoLevel, OfAnImageWithoutSamplesDoesNothing) {
  CImgAutoLevel image;
  image.Do(0.1, 0.9, 0, nullptr);
  image.DoByMean(1.0, 1.0, 0, nullptr);
  image.DoByMedian(1.0, 1.0, 0, nullptr, 5.0);
  EXPECT_EQ(0, image.GetPlanes());
}

TEST(AutoLevel, OfTwoPlanesGoesPlaneByPlane) {
  Random random(6);
  CImgAutoLevel joint = AutoLevelOf(RandomImage(random, 9, 7, 2));
  CImgAutoLevel byPlane(joint);
  joint.Do(0.1, 0.9, 0, nullptr);
  byPlane.Do(0.1, 0.9, 1, nullptr);
  EXPECT_TRUE(SameLevels(byPlane, joint));
  joint.DoByMean(1.0, 2.0, 0, nullptr);
  byPlane.DoByMean(1.0, 2.0, 1, nullptr);
  EXPECT_TRUE(SameLevels(byPlane, joint));
}

TEST(AutoLevel, SurvivesSamplesThatAreNotNumbers) {
  for (float const odd : {kNan, kInfinity, -kInfinity}) {
    for (std::size_t const at : {0u, 7u}) {
      std::vector<float> samples(40, 3.0f);
      std::iota(samples.begin(), samples.end(), 1.0f);
      samples[at] = odd;
      CImgAutoLevel image = MonoOf(8, 5, samples);
      double low = 0.0;
      double high = 0.0;
      image.Do(0.1, 0.9, 0, nullptr);
      image.Get(low, high, nullptr);
      image.DoByMean(1.0, 1.0, 0, nullptr);
      image.DoByMedian(1.0, 1.0, 0, nullptr, 0.0);
      image.DoByMedian(1.0, 1.0, 0, nullptr, 10.0);
      EXPECT_TRUE(SameBits(samples, SamplesOf(image)));
      // Index 40 / 10 + 1 of 1 .. 40, one of which became the smallest, the largest, or not a number.
      bool const first = odd == -kInfinity;
      EXPECT_EQ(first ? (at == 0 ? 6.0 : 5.0) : (at == 0 ? 7.0 : 6.0), image.GetLevelMin(0));
    }
  }
}

TEST(AutoLevelGet, GivesBackRoughlyWhatDoWasGiven) {
  Random random(7);
  for (int planes : {1, 3}) {
    CImgAutoLevel image = AutoLevelOf(RandomImage(random, 200, 150, planes));
    for (int p = 0; p < planes; ++p) image.CImage::SetLevel(p, 0.0, 255.0);
    image.Do(0.05, 0.9, 0, nullptr);
    double low = -1.0;
    double high = -1.0;
    image.Get(low, high, nullptr);
    EXPECT_NEAR(0.05, low, 0.01);
    EXPECT_NEAR(0.9, high, 0.01);
  }
}

TEST(AutoLevelGet, AddsAClassBeforeItsTest) {
  // Range 5000, so that class i begins at i. Of 5001 pixels 5000 are 0 and one is 5000; total 10001.
  std::vector<float> samples(5001, 0.0f);
  samples.back() = 5000.0f;
  CImgAutoLevel image = MonoOf(3, 1667, samples);
  image.CImage::SetLevel(0, 1000.5, 3999.5);
  double low = -1.0;
  double high = -1.0;
  image.Get(low, high, nullptr);
  // Classes 0 .. 1001: 5001 and 1001 ones.
  EXPECT_EQ((5001.0 + 1001.0) / 10001.0, low);
  // Classes 4999 .. 3999: 2 and 1000 ones, less the one of class 3998.
  EXPECT_EQ(1.0 - (2.0 + 1000.0 - 1.0) / 10001.0, high);
}

TEST(AutoLevelGet, ALevelOnTheEdgeOfAClassIsNotPassedByIt) {
  std::vector<float> samples(5001, 0.0f);
  samples.back() = 5000.0f;
  CImgAutoLevel image = MonoOf(3, 1667, samples);
  image.CImage::SetLevel(0, 1000 * 5000.0 * 0.0002, 4000 * 5000.0 * 0.0002);
  double low = -1.0;
  double high = -1.0;
  image.Get(low, high, nullptr);
  // Class 1001 is the first above the lower level, class 3999 the first below the upper one.
  EXPECT_EQ((5001.0 + 1001.0) / 10001.0, low);
  EXPECT_EQ(1.0 - (2.0 + 1000.0 - 1.0) / 10001.0, high);
}

TEST(AutoLevelGet, OfLevelsOutsideIsAFractionOfTheRange) {
  CImgAutoLevel image = MonoOf(2, 1, {10, 30});
  double low = 0.0;
  double high = 0.0;
  image.CImage::SetLevel(0, 10.0, 30.0);  // on the extremes is outside
  image.Get(low, high, nullptr);
  EXPECT_EQ(0.0, low);
  EXPECT_EQ(1.0, high);
  image.CImage::SetLevel(0, 0.0, 50.0);
  image.Get(low, high, nullptr);
  EXPECT_EQ(-0.5, low);
  EXPECT_EQ(2.0, high);
}

TEST(AutoLevelGet, WalksThatFindNothingKeepZeroAndOne) {
  // The lower level lies in the last class: no class begins above it. The upper one lies in class 0.
  CImgAutoLevel image = MonoOf(2, 1, {0, 5000});
  image.CImage::SetLevel(0, 4999.5, 0.5);
  double low = -1.0;
  double high = -1.0;
  image.Get(low, high, nullptr);
  EXPECT_EQ(0.0, low);
  EXPECT_EQ(1.0, high);
}

TEST(AutoLevelGet, EqualsThePlainFormulaEverywhere) {
  Random random(8);
  for (int planes : {1, 3}) {
    for (int width : {2, 13, 40}) {
      for (int height : {1, 3, 30}) {
        COrbImage src = RandomImage(random, width, height, planes);
        for (RectCase& c : RectCases(width, height)) {
          if (IsEmpty(c, src)) continue;
          SetRandomLevels(src, random);
          COrbImage expected(src);
          double expectedLow = -1.0;
          double expectedHigh = -1.0;
          reference::GetAutoLevel(expected, expectedLow, expectedHigh, c.Pointer());
          CImgAutoLevel image = AutoLevelOf(src);
          double low = -2.0;
          double high = -2.0;
          image.Get(low, high, c.Pointer());
          bool const bothOdd = !std::isfinite(expectedLow) || !std::isfinite(expectedHigh);  // one value only
          EXPECT_TRUE(bothOdd ? !std::isfinite(low) || !std::isfinite(high) : expectedLow == low) << c.name;
          EXPECT_TRUE(bothOdd || expectedHigh == high) << c.name << ' ' << expectedHigh << ' ' << high;
          EXPECT_TRUE(SameLevels(src, image));
        }
      }
    }
  }
}

TEST(AutoLevelGet, AlwaysReports) {
  RecordingWindow window;
  CImgAutoLevel image = MonoOf(2, 3, {1, 2, 3, 4, 5, 6});
  image.SetProgressHandle(&window);
  double low = -1.0;
  double high = -1.0;
  image.Get(low, high, nullptr);
  EXPECT_EQ(std::vector<std::string>{"自動レベル設定値計算中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(3, window.polls);
}

TEST(AutoLevelGet, OfAnEmptyRectangleIsZeroAndOne) {
  CImgAutoLevel image = MonoOf(2, 3, {1, 2, 3, 4, 5, 6});
  CRect rect(1, 1, 1, 3);
  double low = -1.0;
  double high = -1.0;
  image.Get(low, high, &rect);
  EXPECT_EQ(0.0, low);
  EXPECT_EQ(1.0, high);
}

TEST(AutoLevelByMean, WorkedExample) {
  // Mean 5, squared deviations 9 1 1 1 0 0 4 16 over 8: deviation 2.
  CImgAutoLevel image = MonoOf(4, 2, {2, 4, 4, 4, 5, 5, 7, 9});
  image.DoByMean(1.5, 3.0, 0, nullptr);
  EXPECT_EQ(2.0, image.GetLevelMin(0));
  EXPECT_EQ(11.0, image.GetLevelMax(0));
}

TEST(AutoLevelByMean, EqualsThePlainFormulaUpToTheOrderOfTheSum) {
  Random random(9);
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 13, 16, 40}) {
      for (int height : {1, 3, 30}) {
        COrbImage const src = RandomImage(random, width, height, planes);
        for (RectCase& c : RectCases(width, height)) {
          for (int perPlane : {0, 1}) {
            COrbImage expected(src);
            reference::AutoLevelByMean(expected, 0.7, 2.5, perPlane, c.Pointer());
            CImgAutoLevel found = AutoLevelOf(src);
            found.DoByMean(0.7, 2.5, perPlane, c.Pointer());
            ExpectCloseLevels(expected, found, c.name);
            EXPECT_TRUE(SameBits(src, found));
          }
        }
      }
    }
  }
}

TEST(AutoLevelByMedian, TakesTheUpperOfTwoMiddleValues) {
  CImgAutoLevel image = MonoOf(4, 1, {8, 1, 4, 2});
  image.DoByMedian(0.0, 0.0, 0, nullptr, 0.0);
  EXPECT_EQ(4.0, image.GetLevelMin(0));
  EXPECT_EQ(4.0, image.GetLevelMax(0));
}

TEST(AutoLevelByMedian, MovesByTheDeviation) {
  CImgAutoLevel image = MonoOf(4, 2, {2, 4, 4, 4, 5, 5, 7, 9});
  image.DoByMedian(1.5, 3.0, 0, nullptr, 0.0);
  EXPECT_EQ(5.0 - 2.0 * 1.5, image.GetLevelMin(0));
  EXPECT_EQ(5.0 + 2.0 * 3.0, image.GetLevelMax(0));
}

TEST(AutoLevelByMedian, FixedRangeStartsOnePastTheTenthPercentile) {
  std::vector<float> samples(100);
  std::iota(samples.begin(), samples.end(), 0.0f);
  std::reverse(samples.begin(), samples.end());
  CImgAutoLevel image = MonoOf(10, 10, samples);
  image.DoByMedian(1.0, 1.0, 0, nullptr, 100.0);
  EXPECT_EQ(11.0, image.GetLevelMin(0));
  EXPECT_EQ(111.0, image.GetLevelMax(0));
}

TEST(AutoLevelByMedian, FixedRangeOfOneValueIsThatValue) {
  CImgAutoLevel image = MonoOf(1, 1, {6.0f});
  image.DoByMedian(1.0, 1.0, 0, nullptr, -2.0);
  EXPECT_EQ(6.0, image.GetLevelMin(0));
  EXPECT_EQ(4.0, image.GetLevelMax(0));
}

TEST(AutoLevelByMedian, FixedRangeIsIgnoredOnColor) {
  Random random(10);
  COrbImage const src = RandomImage(random, 13, 7, 3);
  for (int perPlane : {0, 1}) {
    CImgAutoLevel with = AutoLevelOf(src);
    CImgAutoLevel without(with);
    with.DoByMedian(1.0, 2.0, perPlane, nullptr, 100.0);
    without.DoByMedian(1.0, 2.0, perPlane, nullptr, 0.0);
    EXPECT_TRUE(SameLevels(without, with));
  }
}

TEST(AutoLevelByMedian, EqualsTheFullSort) {
  Random random(11);
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 13, 40}) {
      for (int height : {1, 3, 30}) {
        COrbImage const src = RandomImage(random, width, height, planes);
        for (RectCase& c : RectCases(width, height)) {
          for (int perPlane : {0, 1}) {
            for (double const fixedRange : {0.0, 77.0}) {
              COrbImage expected(src);
              reference::AutoLevelByMedian(expected, 0.0, 0.0, perPlane, c.Pointer(), fixedRange);
              CImgAutoLevel found = AutoLevelOf(src);
              found.DoByMedian(0.0, 0.0, perPlane, c.Pointer(), fixedRange);
              EXPECT_TRUE(SameLevels(expected, found)) << c.name << ' ' << width << 'x' << height << 'x' << planes;
              EXPECT_TRUE(SameBits(src, found));
            }
          }
        }
      }
    }
  }
}

TEST(AutoLevelByMedian, EqualsThePlainFormulaUpToTheOrderOfTheSum) {
  Random random(17);
  for (int planes : {1, 3}) {
    COrbImage const src = RandomImage(random, 40, 30, planes);
    for (RectCase& c : RectCases(40, 30)) {
      for (int perPlane : {0, 1}) {
        COrbImage expected(src);
        reference::AutoLevelByMedian(expected, 0.7, 2.5, perPlane, c.Pointer(), 0.0);
        CImgAutoLevel found = AutoLevelOf(src);
        found.DoByMedian(0.7, 2.5, perPlane, c.Pointer(), 0.0);
        ExpectCloseLevels(expected, found, c.name);
      }
    }
  }
}

// Large enough for the selection to sample.
constexpr int kWide = 500;
constexpr int kHigh = 300;
static_assert(kWide * kHigh > 2 * kRankSample);

void ExpectRanksOfTheFullSort(std::vector<float> const& samples, int width = kWide, int height = kHigh) {
  CImgAutoLevel image = MonoOf(width, height, samples);
  std::vector<float> sorted(samples);
  std::sort(sorted.begin(), sorted.end());
  if (std::isfinite(sorted.front()) && std::isfinite(sorted.back())) {  // otherwise there is no deviation
    image.DoByMedian(0.0, 0.0, 0, nullptr, 0.0);
    EXPECT_EQ(sorted[sorted.size() / 2], image.GetLevelMin(0));
  }
  image.DoByMedian(0.0, 0.0, 0, nullptr, 1.0);
  EXPECT_EQ(sorted[sorted.size() / 10 + 1], image.GetLevelMin(0));
}

TEST(AutoLevelByMedian, SelectsFromManyValuesAsTheSortDoes) {
  Random random(12);
  std::normal_distribution<float> noise(1000.0f, 20.0f);
  std::vector<float> samples(static_cast<std::size_t>(kWide) * kHigh);
  for (float& v : samples) v = noise(random);
  ExpectRanksOfTheFullSort(samples);
  ExpectRanksOfTheFullSort(samples, kWide * kHigh / 50, 50);  // rows longer than a block
  ExpectRanksOfTheFullSort(samples, 5, kWide * kHigh / 5);
  for (float& v : samples) v = std::floor(v / 10.0f);  // few values, each many times
  ExpectRanksOfTheFullSort(samples);
  for (float& v : samples) v = v < 100.0f ? -1.0f : 1.0f;
  ExpectRanksOfTheFullSort(samples);
  std::fill(samples.begin(), samples.end(), 5.0f);
  ExpectRanksOfTheFullSort(samples);
  std::iota(samples.begin(), samples.end(), -70000.0f);
  ExpectRanksOfTheFullSort(samples);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = i % 20 < 2 ? -kInfinity : kInfinity;
  ExpectRanksOfTheFullSort(samples);
}

TEST(AutoLevelByMedian, ManyBrightnessValuesAsTheSortDoes) {
  Random random(13);
  COrbImage const src = RandomImage(random, kWide, kHigh, 3);
  COrbImage expected(src);
  reference::AutoLevelByMedian(expected, 0.0, 0.0, 0, nullptr, 0.0);
  CImgAutoLevel found = AutoLevelOf(src);
  found.DoByMedian(0.0, 0.0, 0, nullptr, 0.0);
  EXPECT_TRUE(SameLevels(expected, found));
}

TEST(AutoLevelByMedian, ASampleThatMisleadsChangesNothing) {
  constexpr std::size_t kCount = static_cast<std::size_t>(kWide) * kHigh;
  SamplePositions positions(kCount);
  std::vector<bool> sampled(kCount);
  for (std::int64_t i = 0; i < kRankSample; ++i) sampled[static_cast<std::size_t>(positions.Next())] = true;
  std::vector<float> samples(kCount);
  // Everything that is looked at lies below everything else, then above it.
  for (float const seen : {-1.0f, 1e9f}) {
    for (std::size_t i = 0; i < kCount; ++i) samples[i] = sampled[i] ? seen : static_cast<float>(i);
    ExpectRanksOfTheFullSort(samples);
  }
  // What is looked at lies far out on both sides, so that all the rest falls into the bracket.
  for (std::size_t i = 0; i < kCount; ++i) {
    samples[i] = sampled[i] ? (i % 2 == 0 ? -1e9f : 1e9f) : static_cast<float>(i);
  }
  ExpectRanksOfTheFullSort(samples);
}

TEST(AutoLevelByMedian, WhatIsNotANumberComesLast) {
  Random random(14);
  std::uniform_real_distribution<float> value(0.0f, 1000.0f);
  std::vector<float> numbers(static_cast<std::size_t>(kWide) * kHigh / 2);
  for (float& v : numbers) v = value(random);
  std::vector<float> samples;
  for (float const v : numbers) {
    samples.push_back(kNan);
    samples.push_back(v);
  }
  CImgAutoLevel image = MonoOf(kWide, kHigh, samples);
  image.DoByMedian(0.0, 0.0, 0, nullptr, 1.0);
  std::sort(numbers.begin(), numbers.end());
  EXPECT_EQ(numbers[samples.size() / 10 + 1], image.GetLevelMin(0));
  std::fill(samples.begin(), samples.end(), kNan);
  SetSamples(image, samples);
  image.DoByMedian(0.0, 0.0, 0, nullptr, 1.0);
  EXPECT_TRUE(std::isnan(image.GetLevelMin(0)));
}

TEST(AutoLevel, WorksOnAHostileStore) {
  Random random(15);
  for (int planes : {1, 3}) {
    COrbImage const src = RandomImage(random, 12, 7, planes);
    CImgAutoLevel calm = AutoLevelOf(src);
    CImgAutoLevel hostile = AutoLevelOf(src);
    MakeHostile(hostile);
    calm.Do(0.1, 0.9, 0, nullptr);
    hostile.Do(0.1, 0.9, 0, nullptr);
    EXPECT_TRUE(SameLevels(calm, hostile));
    calm.DoByMean(1.0, 2.0, 0, nullptr);
    hostile.DoByMean(1.0, 2.0, 0, nullptr);
    EXPECT_TRUE(SameLevels(calm, hostile));
    calm.DoByMedian(1.0, 2.0, 0, nullptr, 0.0);
    hostile.DoByMedian(1.0, 2.0, 0, nullptr, 0.0);
    EXPECT_TRUE(SameLevels(calm, hostile));
    EXPECT_TRUE(SameBits(src, hostile));
    EXPECT_EQ(0, LocksLeft(hostile));
  }
}

TEST(AutoLevel, CopiesAreWholeImages) {
  Random random(16);
  CImgAutoLevel const image = AutoLevelOf(RandomImage(random, 5, 4, 3));
  CImgAutoLevel const copy(image);
  CImgAutoLevel assigned;
  assigned = image;
  EXPECT_TRUE(SameBits(image, copy));
  EXPECT_TRUE(SameBits(image, assigned));
  EXPECT_TRUE(SameLevels(image, assigned));
}

}  // namespace
}  // namespace orb::test
