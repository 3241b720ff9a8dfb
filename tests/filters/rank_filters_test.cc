// CImgFilterMisc::NoiseCut and MinMaxFilter: ranks under a disk.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/filter_misc_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

COrbImage Mono(int width, int height, std::vector<float> const& samples) {
  COrbImage image(-32, width, height, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, samples);
  return image;
}

CImgFilterMisc JunkLike(COrbImage const& src, Random& random) {
  CImgFilterMisc dst;
  dst.Create(src, nullptr, nullptr);
  SetRandomLevels(dst, random);
  FillJunk(dst);
  return dst;
}

std::vector<float> AfterNoiseCut(COrbImage& src, double radius, int cutCool, double coolThreshold, int cutHot,
                                 double hotThreshold) {
  CImgFilterMisc dst;
  dst.Create(src, nullptr, nullptr);
  FillJunk(dst);
  dst.NoiseCut(radius, cutCool, coolThreshold, cutHot, hotThreshold, &src, nullptr, 0);
  return SamplesOf(dst);
}

TEST(NoiseCut, EqualsTheSortedDiskEverywhere) {
  Random random(1);
  double const radii[] = {-2.0, 0.0, 0.6, 1.0, 1.5, 2.2, 3.0, 3.2, 5.0};
  int n = 0;
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 3, 8, 21, 40}) {
      for (int height : {1, 2, 5, 12}) {
        double const radius = radii[n++ % 9];
        COrbImage src = RandomImage(random, width, height, planes);
        if (n % 3 == 0) StrewSpecialSamples(src, random);
        for (RectCase& c : RectCases(width, height)) {
          CImgFilterMisc dst = JunkLike(src, random);
          COrbImage expected(dst);
          reference::NoiseCut(expected, radius, n % 2, 0.2, n % 5, 0.1, src, c.Pointer());
          dst.NoiseCut(radius, n % 2, 0.2, n % 5, 0.1, &src, c.Pointer(), 0);
          EXPECT_TRUE(SameBits(expected, dst)) << c.name << ' ' << width << 'x' << height << " radius " << radius;
          EXPECT_TRUE(SameLevels(expected, dst));
        }
      }
    }
  }
}

TEST(NoiseCut, BothFlagsOffCopyTheSource) {
  Random random(2);
  COrbImage src = RandomImage(random, 20, 9, 3);
  StrewSpecialSamples(src, random);
  EXPECT_TRUE(SameBits(SamplesOf(src), AfterNoiseCut(src, 2.0, 0, 0.0, 0, 0.0)));
}

TEST(NoiseCut, RadiusOneTakesTheThirdOfTheFiveSamplesOfTheCross) {
  COrbImage src = Mono(3, 3, {90, 2, 91, 3, 80, 4, 92, 5, 93});
  EXPECT_EQ(4.0f, AfterNoiseCut(src, 1.0, 0, 0.0, 1, 0.5)[4]) << "2 3 4 5 80, and no corner";
}

TEST(NoiseCut, AnEvenNumberOfSamplesTakesTheUpperMiddle) {
  // Width 1: the cross of a one-column image has the centre three times, but a disk of radius 0 only once.
  COrbImage src = Mono(1, 2, {8, 4});
  EXPECT_EQ((std::vector<float>{8, 4}), AfterNoiseCut(src, 0.0, 1, 0.0, 1, 0.0));
}

TEST(NoiseCut, TheRatioIsTakenToTheSample) {
  // A sample of 100 over a median of 10 departs by 0.9 of itself, not by 9 of the median; one of 10 under 100 by 9.
  COrbImage hot = Mono(3, 3, {10, 10, 10, 10, 100, 10, 10, 10, 10});
  EXPECT_EQ(100.0f, AfterNoiseCut(hot, 1.0, 0, 0.0, 1, 0.95)[4]);
  EXPECT_EQ(10.0f, AfterNoiseCut(hot, 1.0, 0, 0.0, 1, 0.85)[4]);
  COrbImage cool = Mono(3, 3, {100, 100, 100, 100, 10, 100, 100, 100, 100});
  EXPECT_EQ(10.0f, AfterNoiseCut(cool, 1.0, 1, 9.1, 0, 0.0)[4]);
  EXPECT_EQ(100.0f, AfterNoiseCut(cool, 1.0, 1, 8.9, 0, 0.0)[4]);
  EXPECT_EQ(10.0f, AfterNoiseCut(cool, 1.0, 0, 0.0, 1, 0.0)[4]) << "cool samples are not hot";
  EXPECT_EQ(100.0f, AfterNoiseCut(hot, 1.0, 1, 0.0, 0, 0.0)[4]) << "hot samples are not cool";
}

TEST(NoiseCut, ARatioAtTheThresholdStays) {
  COrbImage src = Mono(3, 3, {50, 50, 50, 50, 100, 50, 50, 50, 50});
  EXPECT_EQ(100.0f, AfterNoiseCut(src, 1.0, 1, 0.5, 1, 0.5)[4]);
}

TEST(NoiseCut, ASampleOfZeroIsReplacedWhateverTheThreshold) {
  COrbImage src = Mono(3, 3, {7, 7, 7, 7, 0, 7, 7, 7, 7});
  EXPECT_EQ(7.0f, AfterNoiseCut(src, 1.0, 1, 1e30, 1, 1e30)[4]);
  COrbImage below = Mono(3, 3, {-7, -7, -7, -7, 0, -7, -7, -7, -7});
  EXPECT_EQ(-7.0f, AfterNoiseCut(below, 1.0, 1, 1e30, 1, 1e30)[4]);
}

TEST(NoiseCut, ARatioThatIsNoNumberCountsAsWithin) {
  float const inf = std::numeric_limits<float>::infinity();
  COrbImage zeros = Mono(3, 3, {0, 0, 0, 0, -0.0f, 0, 0, 0, 0});
  EXPECT_TRUE(std::signbit(AfterNoiseCut(zeros, 1.0, 1, 0.0, 1, 0.0)[4]));
  COrbImage infinite = Mono(3, 3, {-inf, -inf, -inf, -inf, inf, -inf, -inf, -inf, -inf});
  EXPECT_EQ(inf, AfterNoiseCut(infinite, 1.0, 0, 0.0, 1, 0.0)[4]);
}

TEST(NoiseCut, RowsMirrorAndColumnsClamp) {
  // Around the upper left corner: itself twice, its right neighbour, and the row below it twice.
  COrbImage src = Mono(2, 3, {100, 1, 2, 1, 3, 1});
  EXPECT_EQ(2.0f, AfterNoiseCut(src, 1.0, 0, 0.0, 1, 0.0)[0]) << "1 2 2 100 100";
  // Around the lower left corner: itself three times, as the row behind the last is the last.
  COrbImage last = Mono(2, 3, {1, 1, 2, 1, 100, 1});
  EXPECT_EQ(100.0f, AfterNoiseCut(last, 1.0, 0, 0.0, 1, 0.0)[4]);
}

TEST(MinMaxFilter, EqualsTheSortedDiskEverywhere) {
  Random random(3);
  double const radii[] = {-3.0, 0.0, 1.0, 1.5, 2.9, 3.0, 4.1, 6.0};
  int n = 0;
  for (int planes : {1, 3}) {
    for (int width : {1, 3, 7, 40}) {
      for (int height : {1, 4, 12}) {
        double const radius = radii[n++ % 8];
        COrbImage src = RandomImage(random, width, height, planes);
        if (n % 3 == 0) StrewSpecialSamples(src, random);
        int const last = reference::GetMinMaxFilterNmax(radius) - 1;
        for (int index : {0, last / 3, last}) {
          for (RectCase& c : RectCases(width, height)) {
            CImgFilterMisc dst = JunkLike(src, random);
            COrbImage expected(dst);
            reference::MinMaxFilter(expected, radius, index, src, c.Pointer());
            dst.MinMaxFilter(radius, index, &src, c.Pointer(), 0);
            EXPECT_TRUE(SameBits(expected, dst)) << c.name << ' ' << width << 'x' << height << " radius " << radius;
            EXPECT_TRUE(SameLevels(expected, dst));
          }
        }
      }
    }
  }
}

TEST(MinMaxFilter, AnIndexBeyondTheDiskWritesZero) {
  Random random(4);
  COrbImage src = RandomImage(random, 7, 5, 1);
  for (int index : {5, 6, 1000, -1, std::numeric_limits<int>::min()}) {
    CImgFilterMisc dst = JunkLike(src, random);
    dst.MinMaxFilter(1.0, index, &src, nullptr, 0);
    EXPECT_TRUE(SameBits(std::vector<float>(35, 0.0f), SamplesOf(dst))) << index;
  }
}

TEST(MinMaxFilter, CountsTheSamplesOfItsDisk) {
  CImgFilterMisc filter;
  for (double radius : {-4.0, -1.0, 0.0, 0.3, 1.0, 1.4, 1.5, 2.0, 3.0, 4.7, 8.0}) {
    EXPECT_EQ(reference::GetMinMaxFilterNmax(radius), filter.GetMinMaxFilterNmax(radius)) << radius;
  }
  EXPECT_EQ(1, filter.GetMinMaxFilterNmax(0.9));
  EXPECT_EQ(5, filter.GetMinMaxFilterNmax(1.0));
  EXPECT_EQ(9, filter.GetMinMaxFilterNmax(1.5));
  EXPECT_EQ(0, filter.GetMinMaxFilterNmax(std::nan("")));
  EXPECT_THROW(filter.GetMinMaxFilterNmax(1e30), std::bad_alloc);
}

TEST(RankFilters, ADiskOfNoNumberHasNoSamples) {
  Random random(5);
  COrbImage src = RandomImage(random, 7, 5, 1);
  CImgFilterMisc dst = JunkLike(src, random);
  dst.MinMaxFilter(std::nan(""), 0, &src, nullptr, 0);
  EXPECT_TRUE(SameBits(std::vector<float>(35, 0.0f), SamplesOf(dst)));
  dst.NoiseCut(std::nan(""), 0, 0.0, 0, 0.0, &src, nullptr, 0);
  EXPECT_TRUE(SameBits(src, dst));
}

TEST(RankFilters, ReportRowsOfEveryPlane) {
  Random random(6);
  COrbImage src = RandomImage(random, 5, 9, 3);
  CRect rect(1, 2, 4, 8);
  for (bool isNoiseCut : {false, true}) {
    RecordingWindow window;
    CImgFilterMisc dst = JunkLike(src, random);
    dst.SetProgressHandle(&window);
    isNoiseCut ? dst.NoiseCut(1.5, 1, 0.1, 1, 0.1, &src, &rect, 0) : dst.MinMaxFilter(1.5, 3, &src, &rect, 0);
    EXPECT_TRUE(window.IsSilent());
    isNoiseCut ? dst.NoiseCut(1.5, 1, 0.1, 1, 0.1, &src, &rect, 1) : dst.MinMaxFilter(1.5, 3, &src, &rect, 1);
    EXPECT_EQ(std::vector<std::string>{isNoiseCut ? "ホット／クールピクセル除去処理中..."
                                                  : "ミニマム／マキシマムフィルター処理中..."},
              window.starts);
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
    EXPECT_EQ(18, OrbTestAccess::ProgressOf(dst).total);
    EXPECT_EQ(18, window.polls);
  }
}

TEST(RankFilters, WorkOnAHostileStore) {
  Random random(7);
  COrbImage src = RandomImage(random, 70, 68, 3);
  CImgFilterMisc cut = JunkLike(src, random);
  CImgFilterMisc least(cut);
  COrbImage expectedCut(cut);
  COrbImage expectedLeast(cut);
  reference::NoiseCut(expectedCut, 2.0, 1, 0.1, 1, 0.1, src, nullptr);
  reference::MinMaxFilter(expectedLeast, 4.0, 20, src, nullptr);
  for (COrbImage* each : {static_cast<COrbImage*>(&cut), static_cast<COrbImage*>(&least), &src}) MakeHostile(*each);
  cut.NoiseCut(2.0, 1, 0.1, 1, 0.1, &src, nullptr, 0);
  least.MinMaxFilter(4.0, 20, &src, nullptr, 0);
  EXPECT_TRUE(SameBits(expectedCut, cut));
  EXPECT_TRUE(SameBits(expectedLeast, least));
  for (COrbImage* each : {static_cast<COrbImage*>(&cut), static_cast<COrbImage*>(&least), &src}) {
    EXPECT_EQ(0, LocksLeft(*each));
  }
}

}  // namespace
}  // namespace orb::test
