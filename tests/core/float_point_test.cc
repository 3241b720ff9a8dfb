// CfPoint and CfSize: an integer and a floating view that follow each other. Sizes behave as points do.
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>

namespace orb::test {
namespace {

template <typename T>
class FloatPair : public testing::Test {};
using Pairs = testing::Types<CfPoint, CfSize>;
TYPED_TEST_SUITE(FloatPair, Pairs);

template <typename T>
void ExpectViews(T const& pair, int x, int y, double fx, double fy) {
  EXPECT_EQ(x, pair.x);
  EXPECT_EQ(y, pair.y);
  EXPECT_EQ(fx, pair.fx);
  EXPECT_EQ(fy, pair.fy);
}

TYPED_TEST(FloatPair, FloatsAreTruncatedTowardZero) {
  ExpectViews(TypeParam(1.9, -1.9), 1, -1, 1.9, -1.9);
  ExpectViews(TypeParam(-0.5, 0.999), 0, 0, -0.5, 0.999);
}

TYPED_TEST(FloatPair, IntegersAreExactAsFloats) {
  ExpectViews(TypeParam(3, 4), 3, 4, 3.0, 4.0);
  ExpectViews(TypeParam(-1, 2147483647), -1, 2147483647, -1.0, 2147483647.0);
}

TYPED_TEST(FloatPair, SetAssignsLikeTheConstructors) {
  TypeParam pair(0, 0);
  pair.Set(7.75, -3.25);
  ExpectViews(pair, 7, -3, 7.75, -3.25);
  pair.Set(-8, 9);
  ExpectViews(pair, -8, 9, -8.0, 9.0);
}

TYPED_TEST(FloatPair, CopiesKeepBothViews) {
  TypeParam pair(2.5, 3.5);
  pair.x = 99;  // the views need not agree
  TypeParam const copy(pair);
  ExpectViews(copy, 99, 3, 2.5, 3.5);
  TypeParam assigned(0, 0);
  assigned = pair;
  ExpectViews(assigned, 99, 3, 2.5, 3.5);
}

TYPED_TEST(FloatPair, ComesFromPlatformPointsAndSizes) {
  ExpectViews(TypeParam(CPoint(5, -6)), 5, -6, 5.0, -6.0);
  ExpectViews(TypeParam(CSize(7, 8)), 7, 8, 7.0, 8.0);
}

// What takes a point takes a platform point as well.
TEST(FloatPoint, PlatformPointsConvert) {
  COrbImage image;
  image.SetStdPt(0, CPoint(4, 5));
  EXPECT_EQ(4.0, image.GetStdPt(0).fx);
  EXPECT_EQ(5, image.GetStdCtr().y);
}

TEST(Truncate, TowardZeroAndHeldInAnInteger) {
  EXPECT_EQ(1, TruncateToInt(1.9));
  EXPECT_EQ(-1, TruncateToInt(-1.9));
  EXPECT_EQ(2147483647, TruncateToInt(2147483647.5));
  EXPECT_EQ(2147483647, TruncateToInt(2147483648.0));
  EXPECT_EQ(std::numeric_limits<int>::min(), TruncateToInt(-2147483648.9));
  EXPECT_EQ(std::numeric_limits<int>::min(), TruncateToInt(-1e300));
  EXPECT_EQ(0, TruncateToInt(std::numeric_limits<double>::quiet_NaN()));
}

TYPED_TEST(FloatPair, FloatsBeyondAnIntegerAreHeldInTheIntegerView) {
  double const infinity = std::numeric_limits<double>::infinity();
  TypeParam const far(1e300, -infinity);
  EXPECT_EQ(std::numeric_limits<int>::max(), far.x);
  EXPECT_EQ(std::numeric_limits<int>::min(), far.y);
  EXPECT_EQ(1e300, far.fx);
  EXPECT_EQ(-infinity, far.fy);
  TypeParam const lost(std::numeric_limits<double>::quiet_NaN(), 1.0);
  EXPECT_EQ(1, lost.y);
  EXPECT_NE(lost.fx, lost.fx);
}

}  // namespace
}  // namespace orb::test
