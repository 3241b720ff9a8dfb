// CImgFilterSpecial::StarSharpFilter.
#include <tests/filters/operator_trials.h>
#include <tests/reference/star_filter_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/special_samples.h>

namespace orb::test {
namespace {

using Filter = CImgFilterSpecial;

Filter Sharpened(COrbImage& src, double radius, double position, double threshold, int keepPeak) {
  Filter dst;
  dst.CopyImage(src, nullptr, nullptr);
  FillJunk(dst);
  dst.StarSharpFilter(radius, position, threshold, keepPeak, &src, nullptr, 0);
  return dst;
}

// The cross of radius 1 around the middle holds 10, 20, 40, 80 and 50 in the centre.
COrbImage CrossImage() { return MonoImage(3, 3, {0, 10, 0, 20, 50, 40, 0, 80, 0}); }

float MiddleOf(Filter const& image) { return image.GetImageAdr(1, 1, 0, 1, nullptr)[0]; }

TEST(StarSharp, EqualsTheSortEverywhere) {
  Random random(1);
  double const radii[] = {1.0, 0.5, 3.0, 1.5, 4.3};
  double const thresholds[] = {0.0, 0.3, 2.0, -1.0};
  int n = 0;
  EachShape(random, [&](COrbImage& src, CRect* rect, std::string const& name) {
    double const radius = radii[n % 5];
    int const count = reference::GetStarSharpFilterNum(radius);
    double const positions[] = {0.0, 2.5, count - 1.0, count - 1.25, -0.5, count + 3.0, count / 3.0, -4.0, 1e300};
    double const position = positions[n % 9];
    double const threshold = thresholds[n % 4];
    int const keepPeak = n / 2 % 2;
    if (n++ % 5 == 4) StrewSpecialSamples(src, random);
    Filter dst = JunkLike<Filter>(src, random);
    COrbImage expected(dst);
    reference::StarSharpFilter(expected, radius, position, threshold, keepPeak, src, rect);
    dst.StarSharpFilter(radius, position, threshold, keepPeak, &src, rect, 0);
    EXPECT_TRUE(SameValues(expected, dst)) << name << ' ' << radius << ' ' << position << ' ' << threshold;
    EXPECT_TRUE(SameLevels(expected, dst));
  });
}

TEST(StarSharp, CountsTheCellsOfItsDisk) {
  Filter filter;
  EXPECT_EQ(5, filter.GetStarSharpFilterNum(1.0));
  EXPECT_EQ(9, filter.GetStarSharpFilterNum(1.5));
  EXPECT_EQ(1, filter.GetStarSharpFilterNum(0.5));
  EXPECT_EQ(29, filter.GetStarSharpFilterNum(3.0));
  EXPECT_EQ(5, filter.GetStarSharpFilterNum(-1.0));
}

TEST(StarSharp, PositionIsAPlaceInTheSortedDisk) {
  COrbImage src = CrossImage();
  EXPECT_EQ(10.0f, MiddleOf(Sharpened(src, 1.0, 0.0, 0.0, 0)));
  EXPECT_EQ(80.0f, MiddleOf(Sharpened(src, 1.0, 4.0, 0.0, 0))) << "the last: the maximum";
  EXPECT_EQ(45.0f, MiddleOf(Sharpened(src, 1.0, 2.5, 0.0, 0))) << "the mean of 40 and 50";
  EXPECT_EQ(12.5f, MiddleOf(Sharpened(src, 1.0, 0.25, 0.0, 0)));
  EXPECT_EQ(80.0f, MiddleOf(Sharpened(src, 1.0, 4.75, 0.0, 0))) << "nothing to interpolate with";
}

TEST(StarSharp, PlacesThatTheDiskDoesNotHaveReadZero) {
  COrbImage src = CrossImage();
  EXPECT_EQ(0.0f, MiddleOf(Sharpened(src, 1.0, 5.0, 0.0, 0)));
  EXPECT_EQ(5.0f, MiddleOf(Sharpened(src, 1.0, -0.5, 0.0, 0))) << "between 0.0 and 10";
  EXPECT_EQ(0.0f, MiddleOf(Sharpened(src, 1.0, -3.0, 0.0, 0)));
}

TEST(StarSharp, KeepsPeaks) {
  COrbImage src = MonoImage(3, 3, {0, 10, 0, 20, 90, 40, 0, 80, 0});
  EXPECT_EQ(90.0f, MiddleOf(Sharpened(src, 1.0, 0.0, 0.0, 1)));
  EXPECT_EQ(10.0f, MiddleOf(Sharpened(src, 1.0, 0.0, 0.0, 0)));
  COrbImage slope = CrossImage();
  EXPECT_EQ(10.0f, MiddleOf(Sharpened(slope, 1.0, 0.0, 0.0, 1))) << "50 is not the largest";
  COrbImage flat = FlatImage(8, 6, 7.0f);
  EXPECT_TRUE(SameBits(flat, Sharpened(flat, 2.0, 99.0, 0.0, 1))) << "every sample is the largest";
}

TEST(StarSharp, ThresholdChangesOnlyWhatLiesFarBelowTheMaximum) {
  COrbImage src = CrossImage();
  // 20 is 3/4 below 80.
  EXPECT_EQ(20.0f, MiddleOf(Sharpened(src, 1.0, 1.0, 0.75, 0)));
  EXPECT_EQ(50.0f, MiddleOf(Sharpened(src, 1.0, 1.0, 0.76, 0)));
  EXPECT_TRUE(SameBits(src, Sharpened(src, 1.0, 1.0, 1e6, 0)));
}

TEST(StarSharp, AThresholdOfZeroSkipsTheTest) {
  COrbImage zeros = MonoImage(3, 1, {-5, 0, 0});
  // 0 / 0 counts as below any threshold but the one that is not asked.
  EXPECT_EQ(0.0f, Sharpened(zeros, 1.0, 4.0, 0.0, 0).GetPixelGrayRaw(0, 0, 0));
  EXPECT_EQ(-5.0f, Sharpened(zeros, 1.0, 4.0, 1e-9, 0).GetPixelGrayRaw(0, 0, 0));
}

TEST(StarSharp, ReportsTheRowsOfEachPlane) {
  ExpectRowsOfEachPlane<Filter>("スターシャープフィルタ処理中...",
                                [](Filter& dst, COrbImage& src, CRect* rect, int progress) {
                                  dst.StarSharpFilter(1.5, 2.0, 0.1, 1, &src, rect, progress);
                                });
}

TEST(StarSharp, WorksOnAHostileStore) {
  ExpectSameOnAHostileStore<Filter>([](Filter& dst, COrbImage& src, CRect* rect, int progress) {
    dst.StarSharpFilter(2.0, 4.5, 0.1, 1, &src, rect, progress);
  });
}

}  // namespace
}  // namespace orb::test
