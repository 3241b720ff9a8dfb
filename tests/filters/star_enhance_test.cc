// CImgFilterSpecial::StarEnhanceFilter.
#include <tests/filters/operator_trials.h>
#include <tests/reference/star_filter_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/special_samples.h>

namespace orb::test {
namespace {

using Filter = CImgFilterSpecial;

Filter Enhanced(COrbImage& src, double sigma, double strength, double threshold, CRect* rect = nullptr) {
  Filter dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.StarEnhanceFilter(sigma, strength, threshold, &src, rect, 0);
  return dst;
}

// One bright sample in the middle of a black square, levels 0 to 1000.
COrbImage StarImage(int size, float brightness) {
  COrbImage image = FlatImage(size, size, 0.0f);
  image.SetLevel(0, 0.0, 1000.0);
  image.SetPixelGrayRaw(size / 2, size / 2, brightness, 0);
  return image;
}

TEST(StarEnhance, EqualsThePlainStagesEverywhere) {
  Random random(1);
  double const sigmas[] = {0.8, 1.0, 1.7, 3.0, 8.0, -1.0};
  double const strengths[] = {1.0, 0.3, -2.0, 0.7};
  double const thresholds[] = {0.1, 0.0, 0.5, -1.0, 3.0};
  int n = 0;
  EachShape(random, [&](COrbImage& src, CRect* rect, std::string const& name) {
    double const sigma = sigmas[n % 6];
    double const strength = strengths[n % 4];
    double const threshold = thresholds[n % 5];
    if (n++ % 5 == 4) StrewSpecialSamples(src, random);
    Filter dst = JunkLike<Filter>(src, random);
    COrbImage expected(dst);
    reference::StarEnhanceFilter(expected, sigma, strength, threshold, src, rect);
    dst.StarEnhanceFilter(sigma, strength, threshold, &src, rect, 0);
    EXPECT_TRUE(SameValues(expected, dst)) << name << ' ' << sigma << ' ' << strength << ' ' << threshold;
    EXPECT_TRUE(SameLevels(expected, dst));
  });
}

TEST(StarEnhance, StrengthZeroCopiesTheSource) {
  Random random(2);
  COrbImage src = RandomImage(random, 20, 9, 3);
  Filter dst = JunkLike<Filter>(src, random);
  dst.StarEnhanceFilter(1.5, 0.0, 0.1, &src, nullptr, 0);
  EXPECT_TRUE(SameBits(src, dst));
}

TEST(StarEnhance, AConstantImageStays) {
  COrbImage src = FlatImage(20, 11, 130.0f);
  EXPECT_TRUE(SameBits(src, Enhanced(src, 1.5, 10.0, 0.01)));
}

// The windows of the three stages reach 2 + 1 + 1 samples, whatever the sigma.
TEST(StarEnhance, IntendedTheBlurTakesFiveByFiveWeightsAtMost) {
  COrbImage src = StarImage(31, 1000.0f);
  Filter const dst = Enhanced(src, 8.0, 1.0, 0.0);
  int const middle = 15;
  for (int x = 0; x < 31; ++x) {
    bool const isChanged = dst.GetImageAdr(x, middle, 0, 1, nullptr)[0] != src.GetPixelGrayRaw(x, middle, 0);
    EXPECT_EQ(x >= middle - 4 && x <= middle + 4, isChanged) << x;
  }
}

// A sample of 1000 in the middle, sigma 8: the blur is flat over 5 x 5 and weak, as the weights are those of 17 x 17.
TEST(StarEnhance, IntendedTheBlurIsNotNormalizedAgain) {
  COrbImage src = StarImage(31, 1000.0f);
  CFilterKernel whole;
  whole.MakeGaussian(8, 8.0);
  double const e = 8.0 * whole.Value(0, 0) - 4.0 * whole.Value(1, 0) - 4.0 * whole.Value(1, 1);
  EXPECT_LT(e * 1000.0, 1.0) << "the Laplacian in the flat middle";
  Filter const dst = Enhanced(src, 8.0, 1.0, 0.0);
  EXPECT_LT(dst.GetImageAdr(15, 15, 0, 1, nullptr)[0], 1003.0f);
  EXPECT_GT(dst.GetImageAdr(15, 15, 0, 1, nullptr)[0], 1000.0f);
}

TEST(StarEnhance, SamplesBeyondTheLevelsCountAsTheLevels) {
  COrbImage at = StarImage(15, 1000.0f);
  COrbImage beyond = StarImage(15, 90000.0f);
  Filter const fromAt = Enhanced(at, 1.0, 1.0, 0.0);
  Filter const fromBeyond = Enhanced(beyond, 1.0, 1.0, 0.0);
  EXPECT_EQ(fromAt.GetImageAdr(8, 7, 0, 1, nullptr)[0], fromBeyond.GetImageAdr(8, 7, 0, 1, nullptr)[0]);
}

// The Laplacian of the middle is 8 b0 - 4 b1 - 4 b2, b being the Gaussian's weights times 1000: about 838.
TEST(StarEnhance, TheThresholdIsAFractionOfTheRange) {
  COrbImage src = StarImage(15, 1000.0f);
  EXPECT_FALSE(SameBits(src, Enhanced(src, 1.0, 1.0, 0.8)));
  EXPECT_TRUE(SameBits(src, Enhanced(src, 1.0, 1.0, 0.836))) << "1.0 is 256/255 of the range";
}

TEST(StarEnhance, ARectangleLimitsOnlyWhatIsWritten) {
  Random random(3);
  COrbImage src = RandomImage(random, 40, 30, 3);
  Filter const whole = Enhanced(src, 1.5, 1.0, 0.2);
  CRect rect(7, 5, 22, 19);
  Filter const part = Enhanced(src, 1.5, 1.0, 0.2, &rect);
  for (int p = 0; p < 3; ++p) {
    for (int y = 0; y < 30; ++y) {
      for (int x = 0; x < 40; ++x) {
        bool const isInside = x >= 7 && x < 22 && y >= 5 && y < 19;
        COrbImage const& expected = isInside ? static_cast<COrbImage const&>(whole) : src;
        ASSERT_EQ(expected.GetImageAdr(x, y, p, 1, nullptr)[0], part.GetImageAdr(x, y, p, 1, nullptr)[0]);
      }
    }
  }
}

TEST(StarEnhance, ReportsTheRowsOfEachPlane) {
  ExpectRowsOfEachPlane<Filter>("スターエンハンス処理中...",
                                [](Filter& dst, COrbImage& src, CRect* rect, int progress) {
                                  dst.StarEnhanceFilter(1.5, 1.0, 0.1, &src, rect, progress);
                                });
}

TEST(StarEnhance, WorksOnAHostileStore) {
  ExpectSameOnAHostileStore<Filter>([](Filter& dst, COrbImage& src, CRect* rect, int progress) {
    dst.StarEnhanceFilter(1.5, 1.0, 0.1, &src, rect, progress);
  });
}

}  // namespace
}  // namespace orb::test
