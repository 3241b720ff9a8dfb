// The transform between frames, and its least-squares fit.
#include <cmath>
#include <random>

#include <gtest/gtest.h>
#include <hosts/orbimg/rigid_fit.h>
#include <orbimg/orbimg.h>

namespace orb::test {
namespace {

using host::FindResiduals;
using host::FitRigid;
using host::FitShift;
using host::FrameTransform;
using host::Position;
using host::PositionPair;
using host::RigidFit;
using host::RigidMap;
using host::RootMeanSquare;

// Positions of a reference and where a transform has them in a frame, moved about by normal errors.
std::vector<PositionPair> MakePairs(FrameTransform const& transform, int count, double error, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> place(0.0, 1000.0);
  std::normal_distribution<double> off(0.0, 1.0);
  RigidMap const map(transform);
  std::vector<PositionPair> pairs;
  for (int i = 0; i < count; ++i) {
    double const x = place(random);
    double const y = place(random);
    Position const exact = map.ToFrame(Position{x, y});
    double const offX = error * off(random);
    double const offY = error * off(random);
    pairs.push_back({{x, y}, {exact.x + offX, exact.y + offY}});
  }
  return pairs;
}

TEST(FrameTransform, GoesWhereTheSamplerGoes) {
  COrbImage image(-32, 60, 50, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (double angle : {0.0, 0.3, -12.5, 90.0, 180.0, 271.0}) {
    FrameTransform const transform{2.25, -3.5, angle, 29.5, 24.5};
    image.SetStdCtr(transform.cx, transform.cy);
    RigidMap const map(transform);
    double const radians = angle * 0.017453292519943295;
    for (int y : {0, 17, 49}) {
      for (int x : {0, 23, 59}) {
        double sx = 0.0;
        double sy = 0.0;
        image.GetPixelGrayRaw(x, y, transform.dx, transform.dy, std::sin(radians), std::cos(radians), 1.0, 0, 0.0, 0,
                              nullptr, &sx, &sy);
        Position const place = map.ToFrame(Position{static_cast<double>(x), static_cast<double>(y)});
        EXPECT_EQ(sx, place.x) << angle;
        EXPECT_EQ(sy, place.y) << angle;
      }
    }
  }
}

TEST(FrameTransform, ThereAndBackIsWhereItBegan) {
  for (double angle : {0.0, 0.04, 33.0, -170.0}) {
    RigidMap const map(FrameTransform{20.0, -7.0, angle, 300.0, 200.0});
    Position const back = map.ToReference(map.ToFrame(Position{12.5, 480.25}));
    EXPECT_NEAR(12.5, back.x, 1e-9);
    EXPECT_NEAR(480.25, back.y, 1e-9);
  }
}

TEST(FrameTransform, AboutAnotherCentreItMapsTheSame) {
  FrameTransform const transform{20.0, -7.0, 15.0, 300.0, 200.0};
  FrameTransform const moved = transform.About(Position{-5.0, 77.0});
  EXPECT_EQ(-5.0, moved.cx);
  EXPECT_EQ(77.0, moved.cy);
  EXPECT_EQ(15.0, moved.angle);
  for (Position const place : {Position{0.0, 0.0}, Position{640.0, 12.0}}) {
    Position const expected = RigidMap(transform).ToFrame(place);
    Position const found = RigidMap(moved).ToFrame(place);
    EXPECT_NEAR(expected.x, found.x, 1e-9);
    EXPECT_NEAR(expected.y, found.y, 1e-9);
  }
}

TEST(RigidFit, FindsTheTransformOfExactPairs) {
  for (double angle : {0.0, 0.017, -3.0, 89.0, 179.0, -120.0}) {
    FrameTransform const truth{-12.25, 40.5, angle, 511.5, 383.5};
    RigidFit const fit = FitRigid(MakePairs(truth, 12, 0.0, 1), Position{511.5, 383.5});
    EXPECT_NEAR(truth.dx, fit.transform.dx, 1e-9);
    EXPECT_NEAR(truth.dy, fit.transform.dy, 1e-9);
    EXPECT_NEAR(truth.angle, fit.transform.angle, 1e-10);
    EXPECT_NEAR(0.0, fit.rms, 1e-9);
  }
}

TEST(RigidFit, ErrorsAverageOutAndAreReportedTruly) {
  FrameTransform const truth{3.0, -2.0, 0.5, 500.0, 500.0};
  int within = 0;
  for (unsigned seed = 0; seed < 200; ++seed) {
    RigidFit const fit = FitRigid(MakePairs(truth, 100, 0.2, seed), Position{500.0, 500.0});
    EXPECT_NEAR(truth.dx, fit.transform.dx, 0.11);
    EXPECT_NEAR(truth.dy, fit.transform.dy, 0.11);
    EXPECT_NEAR(0.2 * std::sqrt(2.0), fit.rms, 0.07);
    if (std::abs(fit.transform.angle - truth.angle) < fit.angleError) ++within;
  }
  EXPECT_GT(within, 115);  // 68 % of 200 within one standard error
  EXPECT_LT(within, 157);
}

TEST(RigidFit, NoTransformOfTheKindLiesNearer) {
  std::vector<PositionPair> const pairs = MakePairs(FrameTransform{3.0, -2.0, 0.5, 500.0, 500.0}, 30, 2.0, 7);
  RigidFit const fit = FitRigid(pairs, Position{500.0, 500.0});
  for (double step : {-0.01, 0.01}) {
    for (int which = 0; which < 3; ++which) {
      FrameTransform other = fit.transform;
      (which == 0 ? other.dx : which == 1 ? other.dy : other.angle) += step;
      EXPECT_GT(RootMeanSquare(FindResiduals(pairs, other)), fit.rms);
    }
  }
}

TEST(RigidFit, OnePairGivesAShift) {
  RigidFit const fit = FitRigid({{{10.0, 20.0}, {7.0, 25.0}}}, Position{0.0, 0.0});
  EXPECT_EQ(3.0, fit.transform.dx);
  EXPECT_EQ(-5.0, fit.transform.dy);
  EXPECT_EQ(0.0, fit.transform.angle);
  EXPECT_EQ(0.0, fit.angleError);
}

TEST(RigidFit, NoPairsGiveNothing) {
  RigidFit const fit = FitRigid({}, Position{4.0, 5.0});
  EXPECT_EQ(0.0, fit.transform.dx);
  EXPECT_EQ(0.0, fit.transform.dy);
  EXPECT_EQ(0.0, fit.rms);
}

TEST(ShiftFit, IsTheMeanDifference) {
  RigidFit const fit = FitShift({{{0.0, 0.0}, {1.0, 2.0}}, {{10.0, 0.0}, {12.0, 0.0}}}, Position{3.0, 3.0});
  EXPECT_DOUBLE_EQ(-1.5, fit.transform.dx);
  EXPECT_DOUBLE_EQ(-1.0, fit.transform.dy);
  EXPECT_EQ(0.0, fit.transform.angle);
}

}  // namespace
}  // namespace orb::test
