// Aligning frames by their stars.
#include <cmath>
#include <string>

#include <gtest/gtest.h>
#include <hosts/orbimg/alignment.h>
#include <hosts/orbimg/simulation.h>
#include <orbimg/orbimg.h>
#include <tests/command/synthetic_stars.h>

namespace orb::test {
namespace {

using host::AlignByStars;
using host::Alignment;
using host::AlignmentMethod;
using host::AlignmentOutcome;
using host::FindStars;
using host::FrameTransform;
using host::Position;
using host::RigidMap;
using host::Simulation;
using host::SimulationSettings;
using host::SquaredDistance;
using host::Star;
using host::StarAlignmentSettings;
using host::StarFinderSettings;

std::vector<Star> StarsAt(std::vector<Position> const& positions) {
  std::vector<Star> stars;
  double flux = 1e6;
  for (Position const& position : positions) stars.push_back(Star{position.x, position.y, flux / 10.0, flux *= 0.95});
  return stars;
}

COrbImage EmptyFrame(int width, int height) { return COrbImage(-32, width, height, 1, 1.0, 0.0, 1, nullptr, nullptr); }

// The largest distance between where two transforms have the corners of a frame.
double Disagreement(FrameTransform const& a, FrameTransform const& b, double width, double height) {
  double most = 0.0;
  for (Position const& corner : {Position{0, 0}, Position{width, 0}, Position{0, height}, Position{width, height}}) {
    most = std::max(most, SquaredDistance(RigidMap(a).ToFrame(corner), RigidMap(b).ToFrame(corner)));
  }
  return std::sqrt(most);
}

TEST(Alignment, FindsShiftAndAngleFromStarLists) {
  for (double angle : {0.0, 0.03, -4.0, 100.0, 180.0}) {
    FrameTransform const truth{20.0, -31.0, angle, 499.5, 349.5};
    std::vector<Position> const stars = RandomPositions(1, 80, 1000.0, 700.0);
    COrbImage reference = EmptyFrame(1000, 700);
    COrbImage frame = EmptyFrame(1000, 700);
    AlignmentOutcome const outcome = AlignByStars(reference, StarsAt(stars), frame,
                                                  StarsAt(MoveToFrame(stars, truth, 0.1, 2)), StarAlignmentSettings{});
    ASSERT_TRUE(outcome.alignment) << outcome.reason;
    EXPECT_EQ(AlignmentMethod::kAllStars, outcome.alignment->method);
    EXPECT_GE(outcome.alignment->starsMatched, 75);
    EXPECT_NEAR(0.1 * std::sqrt(2.0), outcome.alignment->rms.value(), 0.04);
    EXPECT_LT(Disagreement(truth, outcome.alignment->transform, 1000, 700), 0.12) << angle;
    EXPECT_EQ(499.5, frame.GetStdCtr().fx);
    EXPECT_EQ(349.5, frame.GetStdCtr().fy);
  }
}

TEST(Alignment, TwoStarsGiveTheFitOfTheLibrary) {
  FrameTransform const truth{20.0, -31.0, 3.47, 499.5, 349.5};
  std::vector<Position> const stars = RandomPositions(1, 40, 1000.0, 700.0);
  COrbImage reference = EmptyFrame(1000, 700);
  COrbImage frame = EmptyFrame(1000, 700);
  StarAlignmentSettings settings;
  settings.refine = false;
  AlignmentOutcome const outcome =
      AlignByStars(reference, StarsAt(stars), frame, StarsAt(MoveToFrame(stars, truth, 0.0, 2)), settings);
  ASSERT_TRUE(outcome.alignment) << outcome.reason;
  EXPECT_EQ(AlignmentMethod::kTwoStars, outcome.alignment->method);
  double dx = 0.0;
  double dy = 0.0;
  double angle = 0.0;
  EXPECT_EQ(2, reference.GetFitPrm(&frame, dx, dy, angle));
  FrameTransform const& found = outcome.alignment->transform;
  EXPECT_EQ(dx, found.dx);
  EXPECT_EQ(dy, found.dy);
  EXPECT_EQ(angle, found.angle);
  EXPECT_EQ(frame.GetStdPt(0).fx, found.cx);
  EXPECT_EQ(frame.GetStdPt(0).fy, found.cy);
  EXPECT_NEAR(3.47, found.angle, 0.15);
  EXPECT_NE(3.47, found.angle);
  double const apart =
      std::hypot(frame.GetStdPt(0).fx - frame.GetStdPt(1).fx, frame.GetStdPt(0).fy - frame.GetStdPt(1).fy);
  EXPECT_GT(apart, 700.0);
}

TEST(Alignment, AnAngleWithinItsErrorIsNone) {
  FrameTransform const truth{7.25, 2.5, 0.0, 499.5, 349.5};
  std::vector<Position> const stars = RandomPositions(1, 40, 1000.0, 700.0);
  COrbImage reference = EmptyFrame(1000, 700);
  COrbImage frame = EmptyFrame(1000, 700);
  AlignmentOutcome const outcome = AlignByStars(reference, StarsAt(stars), frame,
                                                StarsAt(MoveToFrame(stars, truth, 0.2, 3)), StarAlignmentSettings{});
  ASSERT_TRUE(outcome.alignment) << outcome.reason;
  EXPECT_EQ(0.0, outcome.alignment->transform.angle);
  EXPECT_NEAR(7.25, outcome.alignment->transform.dx, 0.12);
  EXPECT_NEAR(2.5, outcome.alignment->transform.dy, 0.12);
}

TEST(Alignment, SaysWhyAFrameCannotBeAligned) {
  std::vector<Star> const field = StarsAt(RandomPositions(1, 40, 1000.0, 700.0));
  std::vector<Star> const otherField = StarsAt(RandomPositions(9, 30, 1000.0, 700.0));
  std::vector<Star> const two(field.begin(), field.begin() + 2);
  COrbImage reference = EmptyFrame(1000, 700);
  COrbImage frame = EmptyFrame(1000, 700);
  StarAlignmentSettings const settings;
  EXPECT_EQ("no stars found in the frame; at least 3 are needed",
            AlignByStars(reference, field, frame, {}, settings).reason);
  EXPECT_EQ("only 2 stars found in the frame; at least 3 are needed",
            AlignByStars(reference, field, frame, two, settings).reason);
  EXPECT_EQ("only 2 stars found in the reference; at least 3 are needed",
            AlignByStars(reference, two, frame, field, settings).reason);
  AlignmentOutcome const outcome = AlignByStars(reference, field, frame, otherField, settings);
  EXPECT_FALSE(outcome.alignment);
  EXPECT_EQ("its 30 stars form no pattern that the reference's 40 stars show too", outcome.reason);
}

TEST(Alignment, FollowsASimulatedNight) {
  SimulationSettings settings;
  settings.frames = 12;
  Simulation const night(settings);
  COrbImage reference = night.Light(0);
  std::vector<Star> const referenceStars = FindStars(reference, StarFinderSettings{});
  for (int i : {1, 5, 11}) {
    COrbImage frame = night.Light(i);
    AlignmentOutcome const outcome =
        AlignByStars(reference, referenceStars, frame, FindStars(frame, StarFinderSettings{}), StarAlignmentSettings{});
    ASSERT_TRUE(outcome.alignment) << i << ": " << outcome.reason;
    EXPECT_GT(outcome.alignment->starsMatched, 30);
    EXPECT_LT(Disagreement(night.Truth().frames[i].transform, outcome.alignment->transform, 1023, 767), 0.15) << i;
  }
}

}  // namespace
}  // namespace orb::test
