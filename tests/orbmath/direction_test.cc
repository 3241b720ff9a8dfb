// The math library: its frame, its signs, and that its functions fit together.
#include <cmath>
#include <initializer_list>
#include <random>

#include <gtest/gtest.h>
#include <orbmath/direction.h>

namespace orb::test {
namespace {

struct Vector {
  double v[3];
};

Vector DirectionOf(double longitude, double latitude) {
  double const ad[2] = {longitude, latitude};
  Vector out;
  AdToDc(ad, out.v);
  return out;
}

Vector Turn(Vector const& from, double const (&m)[3][3]) {
  Vector out;
  RotateDc(from.v, m, out.v);
  return out;
}

void ExpectNear(double x, double y, double z, Vector const& actual) {
  EXPECT_NEAR(x, actual.v[0], 1e-15);
  EXPECT_NEAR(y, actual.v[1], 1e-15);
  EXPECT_NEAR(z, actual.v[2], 1e-15);
}

TEST(Direction, AxesOfTheFrame) {
  ExpectNear(1, 0, 0, DirectionOf(0, 0));
  ExpectNear(0, 1, 0, DirectionOf(90, 0));
  ExpectNear(-1, 0, 0, DirectionOf(180, 0));
  ExpectNear(0, -1, 0, DirectionOf(-90, 0));
  ExpectNear(0.5, 0.5, std::sqrt(0.5), DirectionOf(45, 45));
}

// Whoever asks whether a point is a pole compares with 1 and -1.
TEST(Direction, ThePolesAreExact) {
  for (double const longitude : {-180.0, -77.25, 0.0, 31.0, 180.0}) {
    EXPECT_EQ(1.0, DirectionOf(longitude, 90).v[2]);
    EXPECT_EQ(-1.0, DirectionOf(longitude, -90).v[2]);
  }
}

TEST(Direction, RotationsAreRightHanded) {
  double x[3][3];
  double y[3][3];
  RotateX(90, x);
  RotateY(90, y);
  ExpectNear(1, 0, 0, Turn({{1, 0, 0}}, x));
  ExpectNear(0, 0, 1, Turn({{0, 1, 0}}, x));
  ExpectNear(0, -1, 0, Turn({{0, 0, 1}}, x));
  ExpectNear(0, 0, -1, Turn({{1, 0, 0}}, y));
  ExpectNear(0, 1, 0, Turn({{0, 1, 0}}, y));
  ExpectNear(1, 0, 0, Turn({{0, 0, 1}}, y));
}

TEST(Direction, DegreesBecomeRadiansByOneConstant) {
  EXPECT_EQ(std::sin(77.0 * 0.017453292519943295), DirectionOf(77, 0).v[1]);
  EXPECT_EQ(std::sin(-33.0 * 0.017453292519943295), DirectionOf(5, -33).v[2]);
  double m[3][3];
  RotateX(12.5, m);
  EXPECT_EQ(std::cos(12.5 * 0.017453292519943295), m[2][2]);
}

TEST(Direction, NoAngleIsTheIdentity) {
  for (auto const rotate : {RotateX, RotateY}) {
    double m[3][3];
    rotate(0.0, m);
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j) EXPECT_EQ(i == j ? 1.0 : 0.0, m[i][j]);
    }
  }
}

TEST(Direction, ProductsByHand) {
  double const a[3][3] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
  double const b[3][3] = {{1, 0, 2}, {0, 3, 0}, {4, 0, 5}};
  double const expected[3][3] = {{13, 6, 17}, {28, 15, 38}, {43, 24, 59}};
  double out[3][3];
  MulMatrix(a, b, out);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) EXPECT_EQ(expected[i][j], out[i][j]);
  }
  Vector const turned = Turn({{1, -1, 2}}, a);
  EXPECT_EQ(5.0, turned.v[0]);
  EXPECT_EQ(11.0, turned.v[1]);
  EXPECT_EQ(17.0, turned.v[2]);
}

TEST(Direction, AProductTurnsByItsSecondFactorFirst) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> angle(-180.0, 180.0);
  for (int i = 0; i < 100; ++i) {
    double x[3][3];
    double y[3][3];
    double both[3][3];
    RotateX(angle(random), x);
    RotateY(angle(random), y);
    MulMatrix(x, y, both);
    Vector const v = DirectionOf(angle(random), angle(random) / 2);
    Vector const expected = Turn(Turn(v, y), x);
    ExpectNear(expected.v[0], expected.v[1], expected.v[2], Turn(v, both));
    EXPECT_NEAR(1.0, std::hypot(expected.v[0], expected.v[1], expected.v[2]), 1e-14);
  }
}

TEST(Direction, OutputsMayBeInputs) {
  double a[3][3];
  double b[3][3];
  double product[3][3];
  RotateX(20, a);
  RotateY(-70, b);
  MulMatrix(a, b, product);
  Vector v = DirectionOf(12, 34);
  Vector const turned = Turn(v, product);
  MulMatrix(a, b, a);
  RotateDc(v.v, a, v.v);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(turned.v[i], v.v[i]);
}

}  // namespace
}  // namespace orb::test
