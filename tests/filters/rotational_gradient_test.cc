// CImgRttnGrdtn.
#include <cmath>
#include <limits>

#include <tests/filters/operator_trials.h>
#include <tests/reference/rotational_gradient_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/special_samples.h>

namespace orb::test {
namespace {

using Gradient = CImgRttnGrdtn;

Gradient GradientOf(COrbImage& src, double angle, double gain, double cx, double cy) {
  Gradient dst;
  dst.CopyImage(src, nullptr, nullptr);
  FillJunk(dst);
  dst.Do(angle, gain, cx, cy, &src, nullptr, 0);
  return dst;
}

void ExpectPlainFormula(COrbImage& src, double angle, double gain, double cx, double cy, CRect* rect, Random& random,
                        std::string const& name) {
  Gradient dst = JunkLike<Gradient>(src, random);
  COrbImage expected(dst);
  reference::RotationalGradient(expected, angle, gain, cx, cy, src, rect);
  dst.Do(angle, gain, cx, cy, &src, rect, 0);
  EXPECT_TRUE(SameValues(expected, dst)) << name << ' ' << angle << ' ' << gain << ' ' << cx << ' ' << cy;
  EXPECT_TRUE(SameLevels(expected, dst));
}

TEST(RotationalGradient, EqualsThePlainFormulaEverywhere) {
  Random random(1);
  double const angles[] = {3.5, 0.0, 90.0, -45.0, 180.0, 720.3, 1e6};
  double const gains[] = {0.0, 1.0, -2.0, 0.1, 25.0};
  int n = 0;
  EachShape(random, [&](COrbImage& src, CRect* rect, std::string const& name) {
    double const centres[] = {src.GetWidth() / 2.0, src.GetHeight() / 3.0, -4.25, 0.0, 17.0};
    if (n % 5 == 4) StrewSpecialSamples(src, random);
    ExpectPlainFormula(src, angles[n % 7], gains[n % 5], centres[n % 4], centres[n / 2 % 5], rect, random, name);
    ++n;
  });
}

// What the fast way decides by bounds, on enough samples that a bound too small would show.
TEST(RotationalGradient, EqualsThePlainFormulaOnLargerImages) {
  Random random(2);
  double const angles[] = {5.0, 0.0, 30.0, 60.0, 90.0, 180.0, 1e-7, 333.3, 1e9};
  int n = 0;
  for (double angle : angles) {
    COrbImage src = RandomImage(random, 310, 170, 1);
    if (n % 2 == 1) StrewSpecialSamples(src, random, 500);
    // An empty border, as stacks have it, and whole numbers, whose sums are whole.
    for (int y = 0; y < 40; ++y) std::fill_n(src.GetImageAdr(0, y, 0, 0, nullptr), 310, y % 2 == 0 ? 0.0f : -0.0f);
    for (int y = 60; y < 90; ++y) {
      for (int x = 0; x < 310; ++x) src.SetPixelGrayRaw(x, y, std::trunc(src.GetPixelGrayRaw(x, y, 0)), 0);
    }
    for (double gain : {0.0, 7.0}) {
      ExpectPlainFormula(src, angle, gain, n % 3 == 0 ? 155.0 : 100.37, n % 3 == 1 ? 85.5 : 60.25, nullptr, random, "");
      ++n;
    }
  }
}

TEST(RotationalGradient, TakesNumbersOfEveryKind) {
  Random random(3);
  double const infinity = std::numeric_limits<double>::infinity();
  double const nan = std::numeric_limits<double>::quiet_NaN();
  for (double odd : {infinity, -infinity, nan, 1e300, -1e300, 1e-300, 1e17}) {
    COrbImage src = RandomImage(random, 20, 11, 1);
    ExpectPlainFormula(src, odd, 1.0, 10.0, 5.0, nullptr, random, "angle");
    ExpectPlainFormula(src, 5.0, odd, 10.0, 5.0, nullptr, random, "gain");
    ExpectPlainFormula(src, 5.0, 1.0, odd, 5.0, nullptr, random, "cx");
    ExpectPlainFormula(src, 5.0, 1.0, 10.0, odd, nullptr, random, "cy");
  }
}

TEST(RotationalGradient, IntendedAGainOfZeroIsNotDivided) {
  COrbImage src = MonoImage(3, 3, {0, 1, 0, 2, 50, 4, 0, 8, 0});
  // Below the centre, the turns by 90 degrees lead to its right and left.
  EXPECT_NEAR(2 * 8 - 4 - 2, GradientOf(src, 90.0, 0.0, 1.0, 1.0).GetPixelGrayRaw(1, 2, 0), 1e-5);
  EXPECT_NEAR(8 + (2 * 8 - 4 - 2) / 5.0, GradientOf(src, 90.0, 5.0, 1.0, 1.0).GetPixelGrayRaw(1, 2, 0), 1e-5);
  EXPECT_NEAR(2 * 8 - 2 * 1, GradientOf(src, 180.0, 0.0, 1.0, 1.0).GetPixelGrayRaw(1, 2, 0), 1e-5);
}

TEST(RotationalGradient, PositionsBetweenSamplesAreRead) {
  COrbImage src = MonoImage(4, 4, {0, 0, 0, 0, 0, 16, 32, 0, 0, 64, 128, 0, 0, 0, 0, 0});
  // A turn by 45 degrees about (1, 1) brings (2, 1) to (1 + s, 1 - s) and (1 + s, 1 + s), s = sqrt(1/2).
  double const s = std::sqrt(0.5);
  double const above = (1 - s) * ((1 - s) * 16 + s * 32);
  double const below = (1 - s) * ((1 - s) * 16 + s * 32) + s * ((1 - s) * 64 + s * 128);
  EXPECT_NEAR(2 * 32 - above - below, GradientOf(src, 45.0, 0.0, 1.0, 1.0).GetPixelGrayRaw(2, 1, 0), 1e-4);
}

TEST(RotationalGradient, AnAngleOfZeroGivesNothingOrTheSample) {
  Random random(4);
  COrbImage src = RandomImage(random, 25, 18, 3);
  Gradient zero = GradientOf(src, 0.0, 0.0, 11.3, 7.9);
  Gradient same = GradientOf(src, 0.0, 3.0, 11.3, 7.9);
  for (int p = 0; p < 3; ++p) {
    for (int y = 1; y < 17; ++y) {
      for (int x = 1; x < 24; ++x) {
        EXPECT_NEAR(0.0, zero.GetPixelGrayRaw(x, y, p), 1e-9);
        EXPECT_NEAR(src.GetPixelGrayRaw(x, y, p), same.GetPixelGrayRaw(x, y, p), 1e-9);
      }
    }
  }
}

TEST(RotationalGradient, TheCentreIsComparedWithItself) {
  Random random(5);
  COrbImage src = RandomImage(random, 9, 9, 1);
  EXPECT_EQ(0.0f, GradientOf(src, 40.0, 0.0, 4.0, 5.0).GetPixelGrayRaw(4, 5, 0));
  EXPECT_EQ(src.GetPixelGrayRaw(4, 5, 0), GradientOf(src, 40.0, 0.5, 4.0, 5.0).GetPixelGrayRaw(4, 5, 0));
}

TEST(RotationalGradient, IntendedOutsideReadsZero) {
  COrbImage src = FlatImage(8, 8, 10.0f);
  // About the far left, both turns lead above and below the image.
  EXPECT_EQ(20.0f, GradientOf(src, 60.0, 0.0, -20.0, 4.0).GetPixelGrayRaw(4, 4, 0));
  EXPECT_EQ(15.0f, GradientOf(src, 60.0, 4.0, -20.0, 4.0).GetPixelGrayRaw(4, 4, 0)) << "(4 + 2) * 10 / 4";
}

// Up to the width, past the last column's centre, the last column is read.
TEST(RotationalGradient, TheLastColumnAndRowAreHeld) {
  COrbImage src = MonoImage(4, 1 + 3, {1, 2, 3, 7, 1, 2, 3, 7, 1, 2, 3, 7, 1, 2, 3, 7});
  // About (3.4, 1.5) a half turn brings column 3 to 3.8.
  EXPECT_NEAR(2 * 7 - 7 - 7, GradientOf(src, 180.0, 0.0, 3.4, 1.5).GetPixelGrayRaw(3, 1, 0), 1e-5);
  // And column 2 to 4.8, outside.
  EXPECT_NEAR(2 * 3, GradientOf(src, 180.0, 0.0, 3.4, 1.5).GetPixelGrayRaw(2, 1, 0), 1e-5);
}

TEST(RotationalGradient, RectanglesAreLimitedToTheImage) {
  struct Open : Gradient {
    using Gradient::CalcRect;
  };
  Open image;
  image.CopyImage(FlatImage(8, 6, 0.0f), nullptr, nullptr);
  int left, top, right, bottom;
  CRect rect(-3, 2, 99, 1);
  image.CalcRect(left, top, right, bottom, &rect);
  EXPECT_EQ((std::vector<int>{0, 2, 8, 1}), (std::vector<int>{left, top, right, bottom}));
  image.CalcRect(left, top, right, bottom, nullptr);
  EXPECT_EQ((std::vector<int>{0, 0, 8, 6}), (std::vector<int>{left, top, right, bottom}));
}

TEST(RotationalGradient, ReportsTheRowsOfEachPlane) {
  ExpectRowsOfEachPlane<Gradient>("ローテーショナル・グラデーション処理中...",
                                  [](Gradient& dst, COrbImage& src, CRect* rect, int progress) {
                                    dst.Do(5.0, 1.0, 2.0, 2.0, &src, rect, progress);
                                  });
}

TEST(RotationalGradient, WorksOnAHostileStore) {
  ExpectSameOnAHostileStore<Gradient>([](Gradient& dst, COrbImage& src, CRect* rect, int progress) {
    dst.Do(5.0, 1.0, 14.0, 7.5, &src, rect, progress);
  });
}

}  // namespace
}  // namespace orb::test
