// Matching star lists by triangles.
#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

#include <gtest/gtest.h>
#include <hosts/orbimg/triangle_match.h>
#include <tests/command/synthetic_stars.h>

namespace orb::test {
namespace {

using host::FrameTransform;
using host::MatchStars;
using host::Position;
using host::StarPair;
using host::TriangleMatchSettings;

// Lists of which some stars are common: the frame's list is shuffled a little, as noise shuffles the order of
// brightness.
struct Lists {
  std::vector<Position> reference;
  std::vector<Position> frame;
  std::vector<int> truth;  // for each star of the frame its index in the reference, or -1
};

Lists MakeLists(FrameTransform const& transform, int common, int falseStars, double error, unsigned seed) {
  Lists lists;
  std::vector<Position> const shared = RandomPositions(seed, common, 1000.0, 700.0);
  std::vector<Position> const moved = MoveToFrame(shared, transform, error, seed + 1000);
  std::vector<Position> const strayReference = RandomPositions(seed + 2000, falseStars, 1000.0, 700.0);
  std::vector<Position> const strayFrame = RandomPositions(seed + 3000, falseStars, 1000.0, 700.0);
  std::vector<int> order(common + falseStars);
  std::iota(order.begin(), order.end(), 0);
  std::mt19937 random(seed);
  std::shuffle(order.begin(), order.end(), random);
  std::vector<int> placeInReference(order.size());
  for (int i : order) {
    placeInReference[i] = static_cast<int>(lists.reference.size());
    lists.reference.push_back(i < common ? shared[i] : strayReference[i - common]);
  }
  std::shuffle(order.begin(), order.end(), random);
  for (int i : order) {
    lists.frame.push_back(i < common ? moved[i] : strayFrame[i - common]);
    lists.truth.push_back(i < common ? placeInReference[i] : -1);
  }
  return lists;
}

void ExpectTrueMatch(Lists const& lists, int common, int least) {
  std::vector<StarPair> const pairs = MatchStars(lists.reference, lists.frame, TriangleMatchSettings{});
  EXPECT_GE(static_cast<int>(pairs.size()), least);
  int wrong = 0;
  for (StarPair const& pair : pairs) wrong += lists.truth[pair.frame] != pair.reference;
  EXPECT_LE(wrong, 1 + common / 50);
}

TEST(TriangleMatch, FindsEveryPairOfCleanLists) {
  for (double angle : {0.0, 0.05, 12.0, 90.0, 180.0, -135.0}) {
    Lists const lists = MakeLists(FrameTransform{31.0, -18.0, angle, 500.0, 350.0}, 40, 0, 0.1, 1);
    ExpectTrueMatch(lists, 40, 39);
  }
}

TEST(TriangleMatch, HalfTheStarsMayBeFalse) {
  for (unsigned seed = 1; seed <= 10; ++seed) {
    Lists const lists = MakeLists(FrameTransform{-77.0, 120.0, 7.0 * seed, 500.0, 350.0}, 25, 25, 0.2, seed);
    ExpectTrueMatch(lists, 25, 24);
  }
}

TEST(TriangleMatch, AFifthOfTheStarsIsEnough) {
  for (unsigned seed = 1; seed <= 10; ++seed) {
    Lists const lists = MakeLists(FrameTransform{15.0, 8.0, 0.1 * seed, 500.0, 350.0}, 12, 36, 0.2, seed + 50);
    ExpectTrueMatch(lists, 12, 10);
  }
}

TEST(TriangleMatch, LongListsMatchBeyondTheBrightest) {
  Lists const lists = MakeLists(FrameTransform{15.0, 8.0, 2.0, 500.0, 350.0}, 60, 0, 0.1, 3);
  TriangleMatchSettings settings;
  settings.brightest = 60;
  EXPECT_GE(MatchStars(lists.reference, lists.frame, settings).size(), 59u);
  settings.brightest = 50;  // the lists are shuffled: about forty of the brightest are common, yet all sixty pair up
  EXPECT_GE(MatchStars(lists.reference, lists.frame, settings).size(), 59u);
}

TEST(TriangleMatch, ThreeStarsOfThreeAreEnough) {
  std::vector<Position> const reference = {{100.0, 100.0}, {600.0, 180.0}, {250.0, 500.0}};
  std::vector<Position> const frame = MoveToFrame(reference, FrameTransform{5.0, 3.0, 1.0, 0.0, 0.0}, 0.05, 1);
  EXPECT_EQ(3u, MatchStars(reference, frame, TriangleMatchSettings{}).size());
}

TEST(TriangleMatch, TwoStarsAreNot) {
  std::vector<Position> const two = {{100.0, 100.0}, {600.0, 180.0}};
  EXPECT_TRUE(MatchStars(two, two, TriangleMatchSettings{}).empty());
  EXPECT_TRUE(MatchStars({}, {}, TriangleMatchSettings{}).empty());
}

TEST(TriangleMatch, UnrelatedListsDoNotMatch) {
  int matched = 0;
  for (unsigned seed = 1; seed <= 30; ++seed) {
    for (int count : {4, 10, 50}) {
      std::vector<Position> const a = RandomPositions(seed, count, 1000.0, 700.0);
      std::vector<Position> const b = RandomPositions(seed + 500, count, 1000.0, 700.0);
      matched += !MatchStars(a, b, TriangleMatchSettings{}).empty();
    }
  }
  EXPECT_EQ(0, matched);
}

TEST(TriangleMatch, AMirroredSkyDoesNotMatch) {
  std::vector<Position> const reference = RandomPositions(4, 40, 1000.0, 700.0);
  std::vector<Position> mirrored = reference;
  for (Position& star : mirrored) star.x = 999.0 - star.x;
  EXPECT_TRUE(MatchStars(reference, mirrored, TriangleMatchSettings{}).empty());
}

TEST(TriangleMatch, AnotherScaleDoesNotMatch) {
  std::vector<Position> const reference = RandomPositions(5, 40, 1000.0, 700.0);
  std::vector<Position> larger = reference;
  for (Position& star : larger) star = Position{star.x * 1.1, star.y * 1.1};
  EXPECT_TRUE(MatchStars(reference, larger, TriangleMatchSettings{}).empty());
}

TEST(TriangleMatch, StarsOnOneSpotDoNotMatch) {
  std::vector<Position> const spot(20, Position{5.0, 5.0});
  EXPECT_TRUE(MatchStars(spot, spot, TriangleMatchSettings{}).empty());
}

TEST(TriangleMatch, NoStarIsPairedTwice) {
  Lists const lists = MakeLists(FrameTransform{3.0, 4.0, 0.0, 0.0, 0.0}, 200, 200, 0.5, 6);
  std::vector<StarPair> const pairs = MatchStars(lists.reference, lists.frame, TriangleMatchSettings{});
  std::vector<int> reference;
  std::vector<int> frame;
  for (StarPair const& pair : pairs) {
    reference.push_back(pair.reference);
    frame.push_back(pair.frame);
  }
  std::sort(reference.begin(), reference.end());
  std::sort(frame.begin(), frame.end());
  EXPECT_EQ(reference.end(), std::adjacent_find(reference.begin(), reference.end()));
  EXPECT_EQ(frame.end(), std::adjacent_find(frame.begin(), frame.end()));
}

}  // namespace
}  // namespace orb::test
