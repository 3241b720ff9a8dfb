// Standard points, selection, centroid and fit.
#include <climits>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/points_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

COrbImage Blank(int width, int height, int planes = 1) {
  return COrbImage(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
}

void SetPoints(COrbImage& image, CfPoint first, CfPoint second) {
  image.SetStdPt(0, first);
  image.SetStdPt(1, second);
}

reference::Fit FitOf(COrbImage& image, COrbImage& other) {
  reference::Fit fit{-1, 99.0, 99.0, 99.0};
  fit.used = image.GetFitPrm(&other, fit.dx, fit.dy, fit.angle);
  return fit;
}

TEST(StandardPoints, AreUnsetWhenEitherIntegerIsMinusOne) {
  COrbImage image = Blank(10, 10);
  EXPECT_EQ(0, image.GetStdPtNum());
  EXPECT_EQ(0, image.IsValidStdPt(0));
  EXPECT_EQ(0, image.IsValidStdCtr());
  image.SetStdPt(0, CfPoint(-1, 5));
  EXPECT_EQ(0, image.IsValidStdPt(0));
  EXPECT_EQ(0, image.GetStdPtNum());
  image.SetStdPt(0, CfPoint(5, -1));
  EXPECT_EQ(0, image.IsValidStdPt(0));
  image.SetStdPt(0, CfPoint(-2, 0));
  EXPECT_EQ(1, image.IsValidStdPt(0));
  image.SetStdPt(1, CfPoint(3, 3));
  EXPECT_EQ(2, image.GetStdPtNum());
  image.SetStdPt(0, CfPoint(-1, -1));
  EXPECT_EQ(1, image.GetStdPtNum());
}

// Intended: the integer view decides.
TEST(StandardPoints, ValidityFollowsTheIntegerView) {
  COrbImage image = Blank(10, 10);
  image.SetStdPt(0, CfPoint(-1.5, 3.0));
  EXPECT_EQ(0, image.IsValidStdPt(0));
  EXPECT_EQ(0, image.IsValidStdCtr());
  image.SetStdPt(0, CfPoint(-0.9, 3.0));
  EXPECT_EQ(1, image.IsValidStdPt(0));
  EXPECT_EQ(1, image.IsValidStdCtr());
}

TEST(StandardPoints, FirstPointMovesTheCentre) {
  COrbImage image = Blank(10, 10);
  image.SetStdPt(0, CfPoint(2.5, 3.5));
  EXPECT_EQ(2.5, image.GetStdCtr().fx);
  EXPECT_EQ(3.5, image.GetStdCtr().fy);
  image.SetStdPt(1, CfPoint(7.0, 8.0));
  EXPECT_EQ(2.5, image.GetStdCtr().fx);
  EXPECT_EQ(7.0, image.GetStdPt(1).fx);
}

TEST(StandardPoints, AreUnsetOneByOne) {
  COrbImage image = Blank(10, 10);
  SetPoints(image, CfPoint(1, 2), CfPoint(3, 4));
  image.SetInvalidStdPt(1);
  EXPECT_EQ(1, image.IsValidStdPt(0));
  EXPECT_EQ(0, image.IsValidStdPt(1));
  EXPECT_EQ(-1.0, image.GetStdPt(1).fx);
  EXPECT_EQ(1, image.IsValidStdCtr());
  image.SetInvalidStdPt(0);
  EXPECT_EQ(0, image.IsValidStdPt(0));
  EXPECT_EQ(0, image.IsValidStdCtr());
  EXPECT_EQ(-1, image.GetStdCtr().x);
}

TEST(StandardPoints, AreUnsetTogether) {
  COrbImage image = Blank(10, 10);
  SetPoints(image, CfPoint(1, 2), CfPoint(3, 4));
  image.InitStdPt();
  EXPECT_EQ(0, image.GetStdPtNum());
  EXPECT_EQ(0, image.IsValidStdCtr());
  EXPECT_EQ(-1.0, image.GetStdPt(0).fx);
  EXPECT_EQ(-1.0, image.GetStdCtr().fy);
}

TEST(StandardPoints, CentreIsSetThreeWays) {
  COrbImage image = Blank(11, 8);
  image.SetStdCtr(CfPoint(1.25, 2.5));
  EXPECT_EQ(1.25, image.GetStdCtr().fx);
  image.SetStdCtr(3, 4);
  EXPECT_EQ(3, image.GetStdCtr().x);
  image.SetStdCtr(5.75, 6.5);
  EXPECT_EQ(5, image.GetStdCtr().x);
  EXPECT_EQ(5.75, image.GetStdCtr().fx);
  image.SetDefaultCenter();
  EXPECT_EQ(5.0, image.GetStdCtr().fx);
  EXPECT_EQ(4.0, image.GetStdCtr().fy);
}

TEST(Selection, IsKeptUnlessEmpty) {
  COrbImage image = Blank(10, 10);
  CRect found(9, 9, 9, 9);
  EXPECT_EQ(0, image.GetSelection(&found));
  EXPECT_EQ(9, found.left);
  CRect wanted(1, 2, 30, 40);
  image.SetSelection(&wanted);
  EXPECT_EQ(1, image.GetSelection(&found));
  EXPECT_EQ(1, found.left);
  EXPECT_EQ(2, found.top);
  EXPECT_EQ(30, found.right);
  EXPECT_EQ(40, found.bottom);
  for (CRect empty : {CRect(3, 0, 3, 5), CRect(0, 5, 5, 5), CRect(5, 5, 1, 1)}) {
    image.SetSelection(&empty);
    EXPECT_EQ(0, image.GetSelection(&found));
  }
  image.SetSelection(&wanted);
  image.InitSelection();
  EXPECT_EQ(0, image.GetSelection(&found));
}

TEST(Centroid, SingleBrightPixelIsExact) {
  for (int planes : {1, 3}) {
    COrbImage image = Blank(20, 15, planes);
    for (int p = 0; p < planes; ++p) image.SetPixelGrayRaw(13, 4, 1000.0f, p);
    double x = 0.0;
    double y = 0.0;
    image.GetCenterOfGravity(x, y, nullptr);
    EXPECT_EQ(13.0, x);
    EXPECT_EQ(4.0, y);
    int column = 0;
    int row = 0;
    CRect rect(10, 0, 19, 9);
    image.GetCenterOfGravity(column, row, &rect);
    EXPECT_EQ(13, column);
    EXPECT_EQ(4, row);
  }
}

TEST(Centroid, ConstantRectangleGivesItsCentre) {
  COrbImage image = Blank(20, 15);
  SetSamples(image, std::vector<float>(300, 77.0f));
  double x = 0.0;
  double y = 0.0;
  CRect rect(3, 2, 10, 9);
  image.GetCenterOfGravity(x, y, &rect);
  EXPECT_EQ(6.0, x);
  EXPECT_EQ(5.0, y);
  image.GetCenterOfGravity(x, y, nullptr);
  EXPECT_EQ(10.0, x);
  EXPECT_EQ(7.0, y);
}

// Intended: the way out is the middle of the rectangle as it came, unclamped, halves cut toward zero.
TEST(Centroid, FallbackUsesTheRectangleAsGiven) {
  COrbImage image = Blank(20, 15);
  double x = 0.0;
  double y = 0.0;
  CRect rect(-9, -6, 4, 101);
  image.GetCenterOfGravity(x, y, &rect);
  EXPECT_EQ(-2.0, x);  // -5 / 2
  EXPECT_EQ(47.0, y);  // 95 / 2
  int column = 0;
  int row = 0;
  image.GetCenterOfGravity(column, row, &rect);
  EXPECT_EQ(-1, column);  // -2.0 + 0.5, cut
  EXPECT_EQ(47, row);
  CRect away(100, 200, 300, 401);
  image.GetCenterOfGravity(x, y, &away);
  EXPECT_EQ(200.0, x);
  EXPECT_EQ(300.0, y);
}

// Intended: values below black count as 0 in the mean, and as they stand in the weights.
TEST(Centroid, ClampActsInTheMeanOnly) {
  COrbImage mono = Blank(4, 1);
  SetSamples(mono, {-1000.0f, 10.0f, 30.0f, 0.0f});
  double x = 0.0;
  double y = 0.0;
  mono.GetCenterOfGravity(x, y, nullptr);
  EXPECT_EQ(2.0, x);  // mean 10: only 30 exceeds it
  EXPECT_EQ(0.0, y);
  COrbImage color = Blank(2, 1, 3);
  SetSamples(color, {100, 100, 100, 100, -1000, 0});
  color.GetCenterOfGravity(x, y, nullptr);
  EXPECT_EQ(1.0, x);  // the negative blue weighs the first pixel down although the mean ignores it
}

TEST(Centroid, IsASquareWeightedMean) {
  COrbImage image = Blank(5, 1);
  SetSamples(image, {0, 30, 20, 0, 0});
  double x = 0.0;
  double y = 0.0;
  image.GetCenterOfGravity(x, y, nullptr);
  EXPECT_DOUBLE_EQ((1 * 400.0 + 2 * 100.0) / 500.0, x);
  int column = 0;
  int row = 9;
  image.GetCenterOfGravity(column, row, nullptr);
  EXPECT_EQ(1, column);
  EXPECT_EQ(0, row);
}

TEST(Centroid, EqualsThePlainFormulaEverywhere) {
  Random random(31);
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 9, 40}) {
      for (int height : {1, 3, 12}) {
        COrbImage image = RandomImage(random, width, height, planes);
        for (RectCase& c : RectCases(width, height)) {
          reference::Centroid const expected = reference::CenterOfGravity(image, c.Pointer());
          double x = 0.0;
          double y = 0.0;
          image.GetCenterOfGravity(x, y, c.Pointer());
          EXPECT_EQ(expected.x, x) << c.name << ' ' << width << 'x' << height << 'x' << planes;
          EXPECT_EQ(expected.y, y) << c.name << ' ' << width << 'x' << height << 'x' << planes;
        }
      }
    }
  }
}

TEST(Centroid, SamplesThatAreNoNumbersGiveTheCentre) {
  COrbImage image = Blank(6, 4);
  for (float v : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                  -std::numeric_limits<float>::infinity()}) {
    SetSamples(image, std::vector<float>(24, v));
    double x = 0.0;
    double y = 0.0;
    image.GetCenterOfGravity(x, y, nullptr);
    EXPECT_EQ(3.0, x);
    EXPECT_EQ(2.0, y);
    image.SetLevel(0, 5.0, 5.0);
    int column = 0;
    int row = 0;
    image.GetCenterOfGravity(column, row, nullptr);
    EXPECT_EQ(3, column);
    image.SetLevel(0, 0.0, 255.0);
  }
}

TEST(Centroid, RectangleWithItsSidesFarApartIsEmpty) {
  COrbImage image = Blank(6, 4);
  CRect rect(INT_MAX, INT_MAX, INT_MIN, INT_MIN);
  double x = 0.0;
  double y = 0.0;
  image.GetCenterOfGravity(x, y, &rect);
  EXPECT_EQ(0.0, x);  // -1 / 2
  EXPECT_EQ(0.0, y);
}

TEST(Centroid, WorksOnAHostileStore) {
  Random random(32);
  COrbImage image = RandomImage(random, 12, 7, 3);
  reference::Centroid const expected = reference::CenterOfGravity(image, nullptr);
  MakeHostile(image);
  double x = 0.0;
  double y = 0.0;
  image.GetCenterOfGravity(x, y, nullptr);
  EXPECT_EQ(expected.x, x);
  EXPECT_EQ(expected.y, y);
  EXPECT_EQ(0, LocksLeft(image));
}

TEST(Fit, SamePointsNeedNoMove) {
  COrbImage image = Blank(50, 50);
  COrbImage other = Blank(50, 50);
  SetPoints(image, CfPoint(10.5, 20.25), CfPoint(30.0, 7.0));
  SetPoints(other, CfPoint(10.5, 20.25), CfPoint(30.0, 7.0));
  reference::Fit const fit = FitOf(image, other);
  EXPECT_EQ(2, fit.used);
  EXPECT_EQ(0.0, fit.dx);
  EXPECT_EQ(0.0, fit.dy);
  EXPECT_EQ(0.0, fit.angle);
}

// Intended: the row difference is negated as an integer, so a level pair points to +180 degrees, not to -180.
TEST(Fit, LevelPairPointsToPlusHalfATurn) {
  COrbImage image = Blank(50, 50);
  COrbImage other = Blank(50, 50);
  SetPoints(image, CfPoint(10, 10), CfPoint(20, 10));
  SetPoints(other, CfPoint(10, 10), CfPoint(10, 20));
  reference::Fit fit = FitOf(image, other);
  EXPECT_EQ(2, fit.used);
  EXPECT_EQ(-90.0, fit.angle);
  fit = FitOf(other, image);
  EXPECT_EQ(90.0, fit.angle);
  SetPoints(other, CfPoint(20, 10), CfPoint(10, 10));  // direction 0
  EXPECT_EQ(-180.0, FitOf(image, other).angle);
  EXPECT_EQ(180.0, FitOf(other, image).angle);
}

TEST(Fit, AngleDoesNotWrap) {
  COrbImage image = Blank(50, 50);
  COrbImage other = Blank(50, 50);
  SetPoints(image, CfPoint(10, 10), CfPoint(20, 10));  // 180 degrees
  SetPoints(other, CfPoint(10, 10), CfPoint(10, 0));   // -90 degrees
  EXPECT_EQ(-270.0, FitOf(image, other).angle);
  EXPECT_EQ(270.0, FitOf(other, image).angle);
}

// Intended: rounded down to a tenth of a degree, also below zero.
TEST(Fit, AngleIsFlooredToTenths) {
  COrbImage image = Blank(50, 50);
  COrbImage other = Blank(50, 50);
  SetPoints(image, CfPoint(10000, 0), CfPoint(0, 0));
  SetPoints(other, CfPoint(10000, 7), CfPoint(0, 0));  // -0.04 degrees
  EXPECT_EQ(-1.0 * 0.1, FitOf(image, other).angle);
  EXPECT_EQ(0.0, FitOf(other, image).angle);
  SetPoints(other, CfPoint(10000, -33), CfPoint(0, 0));  // 0.19 degrees
  EXPECT_EQ(1.0 * 0.1, FitOf(image, other).angle);
  EXPECT_EQ(-2.0 * 0.1, FitOf(other, image).angle);
}

TEST(Fit, NeedsAFirstPointOnBoth) {
  COrbImage image = Blank(51, 31);
  COrbImage other = Blank(41, 21);
  reference::Fit fit = FitOf(image, other);
  EXPECT_EQ(0, fit.used);
  EXPECT_EQ(0.0, fit.dx);
  EXPECT_EQ(0.0, fit.dy);
  EXPECT_EQ(0.0, fit.angle);
  // The centre stays behind all the same.
  EXPECT_EQ(20.0, other.GetStdCtr().fx);
  EXPECT_EQ(10.0, other.GetStdCtr().fy);
  EXPECT_EQ(0, image.IsValidStdCtr());
  image.SetStdPt(0, CfPoint(3, 3));
  EXPECT_EQ(0, FitOf(image, other).used);
  image.SetInvalidStdPt(0);
  other.SetStdPt(0, CfPoint(3, 3));
  fit = FitOf(image, other);
  EXPECT_EQ(0, fit.used);
  EXPECT_EQ(0.0, fit.dx);
  EXPECT_EQ(3.0, other.GetStdCtr().fx);
}

TEST(Fit, OnePointGivesTheShift) {
  COrbImage image = Blank(50, 50);
  COrbImage other = Blank(50, 50);
  image.SetStdPt(0, CfPoint(10.75, 20.5));
  SetPoints(other, CfPoint(8.25, 23.0), CfPoint(40, 40));
  reference::Fit const fit = FitOf(image, other);
  EXPECT_EQ(1, fit.used);
  EXPECT_EQ(2.5, fit.dx);
  EXPECT_EQ(-2.5, fit.dy);
  EXPECT_EQ(0.0, fit.angle);
}

// Intended: an unset second point of the other image counts with its (-1, -1).
TEST(Fit, OtherImagesUnsetSecondPointCounts) {
  COrbImage image = Blank(50, 50);
  COrbImage other = Blank(50, 50);
  SetPoints(image, CfPoint(10, 10), CfPoint(5, 10));  // direction 0
  other.SetStdPt(0, CfPoint(9, 9));                   // from (-1, -1): -45 degrees
  reference::Fit const fit = FitOf(image, other);
  EXPECT_EQ(2, fit.used);
  EXPECT_EQ(-45.0, fit.angle);
}

// Intended: directions are taken from the integer views, shifts from the floating ones.
TEST(Fit, FractionsOfAPixelDoNotTurn) {
  COrbImage image = Blank(50, 50);
  COrbImage other = Blank(50, 50);
  SetPoints(image, CfPoint(10.0, 10.9), CfPoint(40.0, 20.0));
  SetPoints(other, CfPoint(10.9, 10.0), CfPoint(40.9, 20.9));
  reference::Fit const fit = FitOf(image, other);
  EXPECT_EQ(0.0, fit.angle);
  EXPECT_EQ(10.0 - 10.9, fit.dx);
  EXPECT_EQ(10.9 - 10.0, fit.dy);
}

TEST(Fit, PointsThatCoincideGiveNoAngle) {
  COrbImage image = Blank(50, 50);
  COrbImage other = Blank(50, 50);
  SetPoints(image, CfPoint(10.1, 10.2), CfPoint(10.8, 10.9));
  SetPoints(other, CfPoint(4, 4), CfPoint(20, 20));
  EXPECT_EQ(1, FitOf(image, other).used);
  EXPECT_EQ(1, FitOf(other, image).used);
  EXPECT_EQ(0.0, FitOf(other, image).angle);
}

TEST(Fit, OffsetsAreAddedToWhatIsKnown) {
  COrbImage image = Blank(50, 50);
  COrbImage other = Blank(50, 50);
  double dx = 9.0;
  double dy = 9.0;
  double angle = 9.0;
  EXPECT_EQ(0, image.GetFitPrm(&other, dx, dy, angle, 1.0, 2.0, 3.0));
  EXPECT_EQ(0.0, dx);
  EXPECT_EQ(0.0, dy);
  EXPECT_EQ(0.0, angle);
  image.SetStdPt(0, CfPoint(10, 10));
  other.SetStdPt(0, CfPoint(9, 9));
  EXPECT_EQ(1, image.GetFitPrm(&other, dx, dy, angle, 1.5, 2.5, 3.5));
  EXPECT_EQ(2.5, dx);
  EXPECT_EQ(3.5, dy);
  EXPECT_EQ(0.0, angle);
  image.SetStdPt(1, CfPoint(5, 10));
  EXPECT_EQ(2, image.GetFitPrm(&other, dx, dy, angle, 1.5, 2.5, 3.5));
  EXPECT_EQ(2.5, dx);
  EXPECT_EQ(-45.0 + 3.5, angle);
}

TEST(Fit, EqualsThePlainFormula) {
  Random random(33);
  std::uniform_real_distribution<double> place(-3.0, 60.0);
  for (int i = 0; i < 2000; ++i) {
    COrbImage image;
    COrbImage other;
    SetPoints(image, CfPoint(place(random), place(random)), CfPoint(place(random), place(random)));
    SetPoints(other, CfPoint(place(random), place(random)), CfPoint(place(random), place(random)));
    reference::Fit const expected = reference::FitOf(image, other);
    reference::Fit const fit = FitOf(image, other);
    EXPECT_EQ(expected.used, fit.used);
    EXPECT_EQ(expected.dx, fit.dx);
    EXPECT_EQ(expected.dy, fit.dy);
    EXPECT_EQ(expected.angle, fit.angle);
  }
}

TEST(Fit, ExtremePointsSurvive) {
  COrbImage image;
  COrbImage other;
  SetPoints(image, CfPoint(INT_MAX, INT_MIN), CfPoint(INT_MIN, INT_MAX));
  SetPoints(other, CfPoint(INT_MIN, INT_MIN), CfPoint(INT_MAX, INT_MAX));
  EXPECT_EQ(2, FitOf(image, other).used);
  SetPoints(image, CfPoint(0, INT_MIN), CfPoint(0, 0));
  EXPECT_EQ(2, FitOf(image, other).used);
}

TEST(Fit, FirstStarLandsOnFirstStar) {
  COrbImage image = Blank(60, 60);
  COrbImage other = Blank(60, 60);
  SetPoints(image, CfPoint(20, 30), CfPoint(50, 30));
  SetPoints(other, CfPoint(25, 28), CfPoint(25, 58));
  reference::Fit const fit = FitOf(image, other);
  double const s = std::sin(fit.angle * kRadiansPerDegree);
  double const c = std::cos(fit.angle * kRadiansPerDegree);
  double sx = 0.0;
  double sy = 0.0;
  other.GetPixelGrayRaw(20, 30, fit.dx, fit.dy, s, c, 1.0, 0, 0.0, 0, nullptr, &sx, &sy);
  EXPECT_NEAR(25.0, sx, 1e-9);
  EXPECT_NEAR(28.0, sy, 1e-9);
  other.GetPixelGrayRaw(50, 30, fit.dx, fit.dy, s, c, 1.0, 0, 0.0, 0, nullptr, &sx, &sy);
  EXPECT_NEAR(25.0, sx, 1e-9);
  EXPECT_NEAR(58.0, sy, 1e-9);
}

}  // namespace
}  // namespace orb::test
