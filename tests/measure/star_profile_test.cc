// PSF: the climb, the sky around a star, the width and the list of widths.
#include <climits>
#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/star_profile_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

COrbImage Flat(int width, int height, float level, int planes = 1) {
  COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, std::vector<float>(static_cast<std::size_t>(image.GetPixelCount()), level));
  return image;
}

// Noise of deviation 1 around 100, and round stars of the given full width on it.
COrbImage Starfield(Random& random, int width, int height, int planes, double fwhm, int stars) {
  COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
  std::normal_distribution<double> noise(100.0, 1.0);
  for (int p = 0; p < planes; ++p) {
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) image.SetPixelGrayRaw(x, y, static_cast<float>(noise(random)), p);
    }
  }
  for (int n = 0; n < stars; ++n) {
    double const cx = static_cast<double>(random() % 1000) / 1000.0 * width;
    double const cy = static_cast<double>(random() % 1000) / 1000.0 * height;
    double const peak = 50.0 + static_cast<double>(random() % 2000);
    for (int p = 0; p < planes; ++p) {
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
          double const square = (x - cx) * (x - cx) + (y - cy) * (y - cy);
          double const light = peak * std::exp(-4.0 * std::numbers::ln2 * square / (fwhm * fwhm));
          image.SetPixelGrayRaw(x, y, static_cast<float>(image.GetPixelGrayRaw(x, y, p) + light), p);
        }
      }
    }
  }
  return image;
}

// A tent over `slope` pixels each way along the cross through the middle of an image of 101 by 101, 100 high on a sky
// of 0, with one pixel of 1 further out on each arm, where the walk down ends.
COrbImage Tent(int slope) {
  COrbImage image = Flat(101, 101, -100.0f);
  for (int i = 0; i <= 100; ++i) {
    int const d = std::abs(i - 50);
    float const v =
        d == 26 ? 1.0f : std::max(0.0f, 100.0f - static_cast<float>(d) * 100.0f / static_cast<float>(slope));
    image.SetPixelGrayRaw(i, 50, v, 0);
    image.SetPixelGrayRaw(50, i, v, 0);
  }
  return image;
}

CPoint Middle() { return CPoint(50, 50); }

TEST(StarProfile, WorkedExample) {
  // From 100 down to 0 in 16 pixels: half height 8 pixels out, each way.
  COrbImage image = Tent(16);
  PSF profile(&image);
  double base = -1.0;
  ASSERT_EQ(1, OrbTestAccess::GetBase(profile, Middle(), &base));
  EXPECT_EQ(0.0, base);
  double fwhm = 0.0;
  ASSERT_EQ(1, OrbTestAccess::GetFWHM(profile, Middle(), base, &fwhm));
  EXPECT_EQ(16.0, fwhm);
  ASSERT_EQ(1, profile.Add(Middle()));
  EXPECT_EQ(1, profile.GetCount());
  double psf = 0.0;
  ASSERT_EQ(1, profile.GetMeanPSF(&psf));
  EXPECT_EQ(4.0 * 0.4246609, psf);
  ASSERT_EQ(1, profile.GetMeanFWHM(&fwhm));
  EXPECT_EQ(psf * 2.354820045829508 * (psf * 2.354820045829508), fwhm);
  EXPECT_NEAR(16.0, fwhm, 16.0 * 2e-6);
}

TEST(StarProfile, TwentyPixelsAreNoStar) {
  COrbImage image = Tent(20);
  PSF profile(&image);
  double fwhm = 0.0;
  ASSERT_EQ(1, OrbTestAccess::GetFWHM(profile, Middle(), 0.0, &fwhm));
  EXPECT_EQ(20.0, fwhm);
  EXPECT_EQ(0, profile.Add(Middle()));
  EXPECT_EQ(0, profile.GetCount());
  // The pixels at half height, a little lower: half height comes 0.005 pixels earlier.
  for (int const i : {40, 60}) {
    image.SetPixelGrayRaw(i, 50, 49.974874f, 0);
    image.SetPixelGrayRaw(50, i, 49.974874f, 0);
  }
  ASSERT_EQ(1, OrbTestAccess::GetFWHM(profile, Middle(), 0.0, &fwhm));
  EXPECT_NEAR(19.99, fwhm, 1e-6);
  EXPECT_EQ(1, profile.Add(Middle()));
}

TEST(StarProfile, WidthIsTheMeanOfBothDirections) {
  COrbImage image = Tent(16);
  for (int i = 0; i <= 100; ++i) {
    float const d = static_cast<float>(std::abs(i - 50));
    image.SetPixelGrayRaw(50, i, std::max(0.0f, 100.0f - d * 25.0f), 0);
  }
  PSF profile(&image);
  double fwhm = 0.0;
  ASSERT_EQ(1, OrbTestAccess::GetFWHM(profile, Middle(), 0.0, &fwhm));
  EXPECT_EQ((16.0 + 4.0) * 0.5, fwhm);
}

TEST(StarProfile, KeepsTheRootOfTheWidth) {
  COrbImage image = Flat(3, 3, 0.0f);
  PSF const profile(&image);
  EXPECT_EQ(3.0 * 0.4246609, OrbTestAccess::FwhmToPsf(profile, 9.0));
  EXPECT_EQ(2.354820045829508 * 2.0 * (2.354820045829508 * 2.0), OrbTestAccess::PsfToFwhm(profile, 2.0));
  for (double const width : {0.5, 2.0, 3.7, 19.9}) {
    double const back = OrbTestAccess::PsfToFwhm(profile, OrbTestAccess::FwhmToPsf(profile, width));
    EXPECT_NEAR(width, back, width * 2e-6);
    EXPECT_NE(width, back);
  }
}

TEST(StarProfile, ReadsThePlainMeanOfThePlanes) {
  COrbImage image = Flat(1, 1, 0.0f, 3);
  SetSamples(image, {1.0f, 2.0f, 9.0f});
  image.SetLevel(0, -1000.0, 7.0);
  PSF profile(&image);
  EXPECT_EQ(4.0, OrbTestAccess::GetPixelValue(profile, CPoint(0, 0)));
  COrbImage two = Flat(1, 1, 0.0f, 2);
  SetSamples(two, {1.0f, 2.0f});
  PSF ofTwo(&two);
  EXPECT_EQ(1.5, OrbTestAccess::GetPixelValue(ofTwo, CPoint(0, 0)));
}

TEST(StarProfile, ClimbsUphillToAnotherStarEven) {
  COrbImage image = Flat(20, 5, 0.0f);
  for (int x = 0; x < 20; ++x) image.SetPixelGrayRaw(x, 2, static_cast<float>(x < 15 ? x : 30 - 2 * x), 0);
  PSF profile(&image);
  CPoint const peak = OrbTestAccess::ClimbToPeak(profile, CPoint(3, 1));
  EXPECT_EQ(14, peak.x);
  EXPECT_EQ(2, peak.y);
}

TEST(StarProfile, OfEqualNeighboursTheFirstColumnWins) {
  COrbImage image = Flat(3, 3, 0.0f);
  image.SetPixelGrayRaw(2, 0, 5.0f, 0);  // the first in rows
  image.SetPixelGrayRaw(0, 2, 5.0f, 0);  // the first in columns
  PSF profile(&image);
  CPoint peak = OrbTestAccess::ClimbToPeak(profile, CPoint(1, 1));
  EXPECT_EQ(0, peak.x);
  EXPECT_EQ(2, peak.y);
  image.SetPixelGrayRaw(0, 1, 5.0f, 0);  // higher up in the same column
  peak = OrbTestAccess::ClimbToPeak(profile, CPoint(1, 1));
  EXPECT_EQ(0, peak.x);
  EXPECT_EQ(1, peak.y);
}

TEST(StarProfile, APlateauStopsTheClimbAndIsNoRiseOnTheWayDown) {
  COrbImage image = Tent(16);
  image.SetPixelGrayRaw(51, 50, 100.0f, 0);
  PSF profile(&image);
  CPoint const peak = OrbTestAccess::ClimbToPeak(profile, Middle());
  EXPECT_EQ(50, peak.x);
  EXPECT_EQ(50, peak.y);
  // The flat sky of 0 from 16 to 25 pixels out is walked over; the samples begin two beyond the rise at 26.
  for (int i = 0; i < 101; ++i) {
    if (std::abs(i - 50) > 27) image.SetPixelGrayRaw(i, 50, 7.0f, 0);
    if (std::abs(i - 50) > 27) image.SetPixelGrayRaw(50, i, 7.0f, 0);
  }
  double base = 0.0;
  ASSERT_EQ(1, OrbTestAccess::GetBase(profile, Middle(), &base));
  EXPECT_EQ(7.0, base);
}

// The walk down stops at the rise 2 pixels out, on each arm. Samples of 0 left and right, of 10 above and below; or,
// turned, the other way round.
COrbImage Cross(bool isTurned) {
  COrbImage image = Flat(101, 101, -5.0f);
  for (int d = -20; d <= 20; ++d) {
    float const slope = d == 0 ? 1000.0f : std::abs(d) == 1 ? 5.0f : 20.0f;
    bool const isSky = std::abs(d) >= 4 && std::abs(d) <= 15;
    image.SetPixelGrayRaw(50 + d, 50, isSky ? (isTurned ? 10.0f : 0.0f) : slope, 0);
    image.SetPixelGrayRaw(50, 50 + d, isSky ? (isTurned ? 0.0f : 10.0f) : slope, 0);
  }
  return image;
}

TEST(StarProfile, TakesTwelveSamplesOfEachArmBeyondAGapOfTwo) {
  for (bool const isTurned : {false, true}) {
    for (int d = -20; d <= 20; ++d) {
      if (std::abs(d) < 3) continue;
      COrbImage image = Cross(isTurned);
      PSF profile(&image);
      double base = -1.0;
      ASSERT_EQ(1, OrbTestAccess::GetBase(profile, Middle(), &base));
      EXPECT_EQ(10.0, base);  // index 24 of 48: the first that is not 0
      // One more 0 makes it 0, but only where samples are taken.
      image.SetPixelGrayRaw(isTurned ? 50 + d : 50, isTurned ? 50 : 50 + d, 0.0f, 0);
      ASSERT_EQ(1, OrbTestAccess::GetBase(profile, Middle(), &base));
      EXPECT_EQ(std::abs(d) >= 4 && std::abs(d) <= 15 ? 0.0 : 10.0, base) << d;
    }
  }
}

TEST(StarProfile, AStarWithoutNoiseOnAFlatSkyIsRefused) {
  COrbImage image = Flat(41, 41, 100.0f);
  for (int y = 0; y < 41; ++y) {
    for (int x = 0; x < 41; ++x) {
      double const square = (x - 20.0) * (x - 20.0) + (y - 20.0) * (y - 20.0);
      image.SetPixelGrayRaw(x, y, static_cast<float>(100.0 + 1000.0 * std::exp(-square / 6.0)), 0);
    }
  }
  PSF profile(&image);
  double base = 0.0;
  EXPECT_EQ(0, OrbTestAccess::GetBase(profile, CPoint(20, 20), &base));
  EXPECT_EQ(0, profile.Add(CPoint(20, 20)));
  EXPECT_EQ(0, profile.GetCount());
  // One pixel of noise on one arm is enough.
  image.SetPixelGrayRaw(32, 20, 100.5f, 0);
  EXPECT_EQ(1, profile.Add(CPoint(20, 20)));
}

TEST(StarProfile, ThePixelAtZeroIsNeverPartOfTheSlope) {
  // The rise at 0 is not seen, the one at the last pixel is: both lie too near the edge for samples anyway; so a flat
  // row whose only rise lies at its ends has none.
  COrbImage image = Flat(9, 1, 5.0f);
  image.SetPixelGrayRaw(4, 0, 9.0f, 0);
  image.SetPixelGrayRaw(0, 0, 6.0f, 0);
  image.SetPixelGrayRaw(8, 0, 6.0f, 0);
  PSF profile(&image);
  double base = 0.0;
  EXPECT_EQ(0, OrbTestAccess::GetBase(profile, CPoint(4, 0), &base));
  // A rise at 2 gives the sample at 0, mirrored at the other end one at 8.
  image.SetPixelGrayRaw(2, 0, 6.0f, 0);
  ASSERT_EQ(1, OrbTestAccess::GetBase(profile, CPoint(4, 0), &base));
  EXPECT_EQ(6.0, base);
  image.SetPixelGrayRaw(6, 0, 6.0f, 0);
  image.SetPixelGrayRaw(8, 0, 3.0f, 0);
  ASSERT_EQ(1, OrbTestAccess::GetBase(profile, CPoint(4, 0), &base));
  EXPECT_EQ(6.0, base);  // the upper of 3 and 6
}

TEST(StarProfile, PeaksOnTheEdgeAreRefused) {
  for (CPoint const at : {CPoint(0, 20), CPoint(40, 20), CPoint(20, 0), CPoint(20, 40), CPoint(0, 0)}) {
    Random random(3);
    COrbImage image = Starfield(random, 41, 41, 1, 3.0, 0);
    image.SetPixelGrayRaw(at.x, at.y, 5000.0f, 0);
    PSF profile(&image);
    double fwhm = 0.0;
    EXPECT_EQ(0, OrbTestAccess::GetFWHM(profile, at, 100.0, &fwhm));
    EXPECT_EQ(0, profile.Add(at));
    EXPECT_EQ(0, profile.GetCount());
  }
}

TEST(StarProfile, AFlatImageHasNoStars) {
  COrbImage image = Flat(30, 30, 8.0f);
  PSF profile(&image);
  EXPECT_EQ(0, profile.Add(CPoint(15, 15)));
  // Peak and base are equal where there is a base.
  image.SetPixelGrayRaw(20, 15, 9.0f, 0);
  EXPECT_EQ(0, profile.Add(CPoint(10, 15)));
  EXPECT_EQ(0, profile.GetCount());
}

TEST(StarProfile, AnEmptyListHasNoMeanAndNoMedian) {
  COrbImage image = Flat(30, 30, 8.0f);
  PSF profile(&image);
  double result = -5.0;
  EXPECT_EQ(0, profile.GetMeanPSF(&result));
  EXPECT_EQ(0, profile.GetMedianPSF(&result));
  EXPECT_EQ(-5.0, result);
  EXPECT_EQ(0, profile.GetMeanFWHM(&result));
  EXPECT_EQ(0, profile.GetMedianFWHM(&result));
}

TEST(StarProfile, MeanAndMedianOfTheList) {
  COrbImage image = Flat(3, 3, 0.0f);
  PSF profile(&image);
  OrbTestAccess::WidthsOf(profile) = {1.5, 0.25, 1.0, 0.5};
  double result = 0.0;
  EXPECT_EQ(1, profile.GetMeanPSF(&result));
  EXPECT_EQ(3.25 / 4, result);
  EXPECT_EQ((std::vector<double>{1.5, 0.25, 1.0, 0.5}), OrbTestAccess::WidthsOf(profile));
  EXPECT_EQ(1, profile.GetMedianPSF(&result));
  EXPECT_EQ(1.0, result);  // index 2 of 4
  EXPECT_EQ((std::vector<double>{0.25, 0.5, 1.0, 1.5}), OrbTestAccess::WidthsOf(profile));
  EXPECT_EQ(1, profile.GetMedianFWHM(&result));
  EXPECT_EQ(2.354820045829508 * 2.354820045829508, result);
}

TEST(StarProfile, TheBoundsAreThoseOfTheKeptForm) {
  COrbImage image = Flat(3, 3, 0.0f);
  PSF profile(&image);
  for (double const psf : {1e-06, 20.0, 0.0, 25.0}) {
    OrbTestAccess::WidthsOf(profile) = {psf};
    double result = -5.0;
    EXPECT_EQ(0, profile.GetMeanPSF(&result)) << psf;
    EXPECT_EQ(0, profile.GetMedianPSF(&result)) << psf;
    EXPECT_EQ(-5.0, result);
    // Written all the same.
    EXPECT_EQ(0, profile.GetMeanFWHM(&result));
    EXPECT_NE(-5.0, result);
    result = -5.0;
    EXPECT_EQ(0, profile.GetMedianFWHM(&result));
    EXPECT_NE(-5.0, result);
  }
  for (double const psf : {1.0000001e-06, 19.999}) {
    OrbTestAccess::WidthsOf(profile) = {psf};
    double result = -5.0;
    EXPECT_EQ(1, profile.GetMeanPSF(&result));
    EXPECT_EQ(psf, result);
    EXPECT_EQ(1, profile.GetMedianPSF(&result));
    EXPECT_EQ(psf, result);
  }
  // 19.999 means a width of more than two thousand pixels.
  double fwhm = 0.0;
  EXPECT_EQ(1, profile.GetMeanFWHM(&fwhm));
  EXPECT_GT(fwhm, 2000.0);
}

TEST(StarProfile, FindsTheWidthOfNoisyStars) {
  for (double const fwhm : {2.5, 4.0, 8.0}) {
    COrbImage image(-32, 61, 61, 1, 1.0, 0.0, 1, nullptr, nullptr);
    Random random(9);
    std::normal_distribution<double> noise(100.0, 1.0);
    for (int y = 0; y < 61; ++y) {
      for (int x = 0; x < 61; ++x) {
        double const square = (x - 30.0) * (x - 30.0) + (y - 30.0) * (y - 30.0);
        double const light = 5000.0 * std::exp(-4.0 * std::numbers::ln2 * square / (fwhm * fwhm));
        image.SetPixelGrayRaw(x, y, static_cast<float>(noise(random) + light), 0);
      }
    }
    PSF profile(&image);
    ASSERT_EQ(1, profile.Add(CPoint(31, 29)));
    double found = 0.0;
    ASSERT_EQ(1, profile.GetMeanFWHM(&found));
    // Linear interpolation of a bell between pixels is off by a few hundredths of its width.
    EXPECT_NEAR(fwhm, found, 0.04 * fwhm);
  }
}

void ExpectTheReferenceAt(COrbImage& image, CPoint point) {
  PSF profile(&image);
  CPoint const expectedPeak = reference::ClimbToPeak(image, point);
  CPoint const peak = OrbTestAccess::ClimbToPeak(profile, point);
  ASSERT_TRUE(expectedPeak.x == peak.x && expectedPeak.y == peak.y);
  double expected = -1.0;
  double found = -2.0;
  int const isStar = reference::MeasureStar(image, point, expected);
  ASSERT_EQ(isStar, profile.Add(point));
  ASSERT_EQ(isStar, profile.GetCount());
  if (isStar == 1) {
    found = OrbTestAccess::WidthsOf(profile).at(0);
    ASSERT_EQ(expected, found);
  }
}

TEST(StarProfile, EqualsThePlainFormulaEverywhere) {
  Random random(11);
  int stars = 0;
  for (int trial = 0; trial < 300; ++trial) {
    int const width = 1 + static_cast<int>(random() % (trial % 3 == 0 ? 12 : 60));
    int const height = 1 + static_cast<int>(random() % (trial % 4 == 0 ? 12 : 60));
    int const planes = trial % 2 == 0 ? 1 : 3;
    double const fwhm = 1.0 + static_cast<double>(random() % 120) / 10.0;
    COrbImage image = Starfield(random, width, height, planes, fwhm, trial % 4);
    if (trial % 5 == 0) StrewSpecialSamples(image, random, 9);
    for (int n = 0; n < 12; ++n) {
      CPoint const point(static_cast<int>(random() % static_cast<unsigned>(width)),
                         static_cast<int>(random() % static_cast<unsigned>(height)));
      SCOPED_TRACE(testing::Message() << trial << ' ' << width << 'x' << height << ' ' << point.x << ',' << point.y);
      ExpectTheReferenceAt(image, point);
      if (testing::Test::HasFatalFailure()) return;
      PSF profile(&image);
      stars += profile.Add(point);
    }
  }
  EXPECT_GT(stars, 500);  // both ways were taken
}

TEST(StarProfile, PointsOutsideTheImageAreRefused) {
  Random random(12);
  COrbImage image = Starfield(random, 30, 30, 1, 3.0, 2);
  PSF profile(&image);
  for (CPoint const at : {CPoint(-1, 5), CPoint(5, -1), CPoint(30, 5), CPoint(5, 30), CPoint(INT_MIN, INT_MAX)}) {
    EXPECT_EQ(0, profile.Add(at));
  }
  COrbImage empty;
  PSF ofNothing(&empty);
  EXPECT_EQ(0, ofNothing.Add(CPoint(0, 0)));
}

TEST(StarProfile, SurvivesSamplesThatAreNotNumbers) {
  for (float const odd : {kNan, kInfinity, -kInfinity}) {
    for (int at = 0; at < 41; ++at) {
      Random random(13);
      COrbImage image = Starfield(random, 41, 41, 1, 3.0, 0);
      image.SetPixelGrayRaw(20, 20, 5000.0f, 0);
      image.SetPixelGrayRaw(at, 20, odd, 0);
      ExpectTheReferenceAt(image, CPoint(20, 20));
    }
  }
  // A slope that goes through not-a-number has no width: the place of half height would not be a number.
  COrbImage image = Tent(16);
  image.SetPixelGrayRaw(42, 50, kNan, 0);
  image.SetPixelGrayRaw(43, 50, kNan, 0);
  PSF profile(&image);
  EXPECT_EQ(0, profile.Add(Middle()));
}

TEST(StarProfile, TheListGrowsStarByStar) {
  Random random(14);
  COrbImage image = Tent(16);
  PSF profile(&image);
  for (int n = 1; n <= 40; ++n) {
    EXPECT_EQ(1, profile.Add(Middle()));
    EXPECT_EQ(n, profile.GetCount());
    EXPECT_EQ(0, profile.Add(CPoint(0, 0)));
    EXPECT_EQ(n, profile.GetCount());
  }
}

TEST(StarProfile, WorksOnAHostileStoreAndChangesNothing) {
  Random random(15);
  COrbImage image = Starfield(random, 40, 40, 3, 3.0, 4);
  COrbImage const before(image);
  MakeHostile(image);
  for (int n = 0; n < 20; ++n) {
    ExpectTheReferenceAt(image, CPoint(static_cast<int>(random() % 40), static_cast<int>(random() % 40)));
  }
  EXPECT_TRUE(SameBits(before, image));
  EXPECT_EQ(0, LocksLeft(image));
}

}  // namespace
}  // namespace orb::test
