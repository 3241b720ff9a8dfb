// SampledRow against the single-sample forms, bit for bit.
#include <cmath>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/core/sampled_row_kernels.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/hostile_store.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

struct Geometry {
  double dx;
  double dy;
  double sinA;
  double cosA;
  double scale = 1.0;
};

Geometry Turned(double dx, double dy, double degrees) {
  double const radians = degrees * orb::kRadiansPerDegree;
  return Geometry{dx, dy, std::sin(radians), std::cos(radians)};
}

template <typename Sample>
testing::AssertionResult SameRow(std::vector<Sample> const& expected, std::vector<Sample> const& actual) {
  std::vector<Sample> const e = CanonicalNans(expected);
  std::vector<Sample> const a = CanonicalNans(actual);
  for (std::size_t i = 0; i < e.size(); ++i) {
    if (std::memcmp(&e[i], &a[i], sizeof(Sample)) != 0) {
      return testing::AssertionFailure() << "column " << i << ": expected " << e[i] << ", found " << a[i];
    }
  }
  return testing::AssertionSuccess();
}

// All rows -3 .. rows + 2 of the columns left .. right - 1, in all four forms, with every plane and the brightness.
void ExpectEqualsSingleSamples(COrbImage& image, Geometry const& g, int left, int right, int rows) {
  constexpr double kOutside = -12345.678;
  SampledRow row(image, left, right, g.dx, g.dy, g.sinA, g.cosA, g.scale);
  std::size_t const count = right > left ? static_cast<std::size_t>(right - left) : 0;
  for (int y = -3; y < rows + 3; ++y) {
    row.Locate(y);
    ASSERT_LE(0, row.InsideBegin());
    ASSERT_LE(row.InsideBegin(), row.InsideEnd());
    ASSERT_LE(row.InsideEnd(), static_cast<std::ptrdiff_t>(count));
    std::vector<double> x(count), sx(count), y0(count), sy(count);
    for (std::size_t i = 0; i < count; ++i) {
      int isOutside = -1;
      image.GetPixelGrayRaw(left + static_cast<int>(i), y, g.dx, g.dy, g.sinA, g.cosA, g.scale, 0, 0.0, 0, &isOutside,
                            &x[i], &y0[i]);
      std::ptrdiff_t const column = static_cast<std::ptrdiff_t>(i);
      sx[i] = row.PositionX(column);
      sy[i] = row.PositionY(column);
      ASSERT_EQ(isOutside == 0, row.InsideBegin() <= column && column < row.InsideEnd()) << "column " << i;
    }
    ASSERT_TRUE(SameRow(x, sx)) << "source x of row " << y;
    ASSERT_TRUE(SameRow(y0, sy)) << "source y of row " << y;
    for (int plane = -1; plane < image.GetPlanes(); ++plane) {
      std::vector<float> raw(count, 7.0f), gray(count, 7.0f), expectedRaw(count), expectedGray(count);
      row.SampleRaw(plane, kOutside, raw.data());
      row.Sample256f(plane, kOutside, gray.data());
      for (std::size_t i = 0; i < count; ++i) {
        int const column = left + static_cast<int>(i);
        expectedRaw[i] = image.GetPixelGrayRaw(column, y, g.dx, g.dy, g.sinA, g.cosA, g.scale, plane, kOutside, 0,
                                               nullptr, nullptr, nullptr);
        expectedGray[i] = image.GetPixelGray256f(column, y, g.dx, g.dy, g.sinA, g.cosA, g.scale, plane, kOutside, 0,
                                                 nullptr, nullptr, nullptr);
      }
      ASSERT_TRUE(SameRow(expectedRaw, raw)) << "raw, row " << y << " plane " << plane;
      ASSERT_TRUE(SameRow(expectedGray, gray)) << "256-scale, row " << y << " plane " << plane;
    }
    for (int plane = 0; plane < 3; ++plane) {
      std::vector<double> raw(count, 7.0), gray(count, 7.0), expectedRaw(count), expectedGray(count);
      row.SampleDouble(plane, kOutside, raw.data());
      row.SampleDouble256f(plane, kOutside, gray.data());
      for (std::size_t i = 0; i < count; ++i) {
        double v[3];
        double w[3];
        int const column = left + static_cast<int>(i);
        image.GetPixelRgbRaw(column, y, g.dx, g.dy, g.sinA, g.cosA, g.scale, &v[0], &v[1], &v[2], kOutside, nullptr,
                             nullptr, nullptr);
        image.GetPixelRgb256f(column, y, g.dx, g.dy, g.sinA, g.cosA, g.scale, &w[0], &w[1], &w[2], kOutside, nullptr,
                              nullptr, nullptr);
        expectedRaw[i] = v[plane];
        expectedGray[i] = w[plane];
      }
      ASSERT_TRUE(SameRow(expectedRaw, raw)) << "raw doubles, row " << y << " plane " << plane;
      ASSERT_TRUE(SameRow(expectedGray, gray)) << "256-scale doubles, row " << y << " plane " << plane;
    }
  }
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::vector<Geometry> Shifts() {
  std::vector<Geometry> shifts;
  for (double const dx : {0.0, 1.0, -2.0, 2.5, -0.3, 0.1, 3.0000000000000004, 2.9999999999999996, 1e-17, -1e-17,
                          1.1e-16, 7.0, 1e9, -1e300, kInfinity, kNan}) {
    for (double const dy : {0.0, -1.0, 0.25, 1.1e-16, 5e8, kNan}) shifts.push_back(Geometry{dx, dy, 0.0, 1.0});
  }
  shifts.push_back(Geometry{0.5, -0.5, -0.0, 1.0});
  return shifts;
}

std::vector<Geometry> Turns() {
  std::vector<Geometry> turns = {{0.0, 0.0, 1.0, 0.0},    {1.0, -2.0, -1.0, 0.0}, {0.0, 0.0, 0.0, -1.0},
                                 {2.5, 0.0, 1e-300, 1.0}, {0.3, 0.4, kNan, kNan}, {kInfinity, 0.0, 0.6, 0.8}};
  for (double const degrees : {1e-6, 0.1, -3.0, 30.0, 45.0, 89.9, 90.0, -90.0, 135.0, 180.0, 270.0, 359.9}) {
    turns.push_back(Turned(0.0, 0.0, degrees));
    turns.push_back(Turned(1.75, -2.25, degrees));
  }
  turns.push_back(Turned(1e12, 0.0, 20.0));
  return turns;
}

TEST(SampledRow, ShiftsEqualSingleSamples) {
  Random random(11);
  for (int const width : {1, 2, 3, 9, 20, 40}) {
    for (int const height : {1, 2, 7}) {
      COrbImage image = RandomImage(random, width, height, width % 2 == 0 ? 3 : 1);
      if (width % 3 == 0) StrewSpecialSamples(image, random);
      for (Geometry const& g : Shifts()) {
        SCOPED_TRACE(testing::Message() << width << 'x' << height << " shift " << g.dx << ' ' << g.dy);
        ExpectEqualsSingleSamples(image, g, -4, width + 5, height);
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST(SampledRow, TurnsEqualSingleSamples) {
  Random random(12);
  for (int const width : {1, 2, 3, 8, 25, 40}) {
    for (int const height : {1, 2, 12}) {
      COrbImage image = RandomImage(random, width, height, width % 2 == 0 ? 3 : 1);
      image.SetStdCtr(width / 2.0, height / 3.0);
      if (width % 3 == 0) image.SetStdCtr(width - 1, 0);
      if (width % 5 == 0) StrewSpecialSamples(image, random);
      for (Geometry const& g : Turns()) {
        SCOPED_TRACE(testing::Message() << width << 'x' << height << " shift " << g.dx << ' ' << g.dy << " sine "
                                        << g.sinA << " cosine " << g.cosA);
        ExpectEqualsSingleSamples(image, g, -6, width + 6, height);
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST(SampledRow, ScalesEqualSingleSamples) {
  Random random(16);
  for (int const width : {1, 2, 9, 24}) {
    COrbImage image = RandomImage(random, width, 7, width % 2 == 0 ? 3 : 1);
    image.SetStdCtr(width / 2.0, 2.5);
    if (width % 3 == 0) StrewSpecialSamples(image, random);
    for (double const scale : {0.5, 2.0, 0.37, 1.0000000000000002, -1.0, -0.6, 0.0, 1e-300, 1e300, kInfinity, kNan}) {
      for (double const degrees : {0.0, -3.0, 90.0, 200.0}) {
        Geometry g = degrees == 0.0 ? Geometry{1.25, -0.5, 0.0, 1.0} : Turned(1.25, -0.5, degrees);
        g.scale = scale;
        SCOPED_TRACE(testing::Message() << width << " scale " << scale << " degrees " << degrees);
        ExpectEqualsSingleSamples(image, g, -6, width + 6, 7);
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST(SampledRow, AnUnsetCentreIsTakenAsItStandsByTurnsAndNotTouchedByShifts) {
  Random random(13);
  COrbImage image = RandomImage(random, 15, 9, 1);
  ASSERT_FALSE(image.IsValidStdCtr());
  ExpectEqualsSingleSamples(image, Geometry{2.5, 0.5, 0.0, 1.0}, 0, 15, 9);
  ExpectEqualsSingleSamples(image, Turned(2.5, 0.5, 12.0), 0, 15, 9);
  image.SetStdCtr(kNan, kInfinity);
  ExpectEqualsSingleSamples(image, Geometry{2.5, 0.5, 0.0, 1.0}, 0, 15, 9);
  ExpectEqualsSingleSamples(image, Turned(2.5, 0.5, 12.0), 0, 15, 9);
}

TEST(SampledRow, RandomGeometryOverSourcesOfOtherSizes) {
  Random random(14);
  std::uniform_real_distribution<double> shift(-12.0, 12.0);
  std::uniform_real_distribution<double> angle(-400.0, 400.0);
  std::uniform_int_distribution<int> size(1, 40);
  for (int i = 0; i < 150; ++i) {
    COrbImage image = RandomImage(random, size(random), 1 + size(random) % 12, i % 2 == 0 ? 1 : 3);
    image.SetStdCtr(shift(random), shift(random));
    Geometry g = i % 3 == 0 ? Geometry{shift(random), shift(random), 0.0, 1.0}
                            : Turned(shift(random), shift(random), angle(random));
    if (i % 4 == 0) g.scale = shift(random) / 6.0;
    int const left = size(random) - 20;
    ExpectEqualsSingleSamples(image, g, left, left + size(random), 12);
    if (HasFatalFailure()) return;
  }
}

// The stored sample itself, and no product of its neighbour with a fraction of 0.
TEST(SampledRow, WholeCoordinatesReadTheStoredSampleAlone) {
  float const infinity = std::numeric_limits<float>::infinity();
  COrbImage image(-32, 4, 3, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, {1, infinity, -0.0f, 4, 5, 6, 7, 8, 9, 10, 11, 12});
  SampledRow row(image, 0, 4, 0.0, 0.0, 0.0, 1.0);
  row.Locate(0);
  float out[4];
  row.SampleRaw(0, 0.0, out);
  EXPECT_EQ(1.0f, out[0]);
  EXPECT_EQ(infinity, out[1]);
  EXPECT_EQ(0.0f, out[2]);
  EXPECT_TRUE(std::signbit(out[2]));
  EXPECT_EQ(4.0f, out[3]);
}

// Intended: the last column goes through the interpolation with a fraction of 1, so an infinite neighbour spoils it.
TEST(SampledRow, TheLastColumnIsInterpolated) {
  COrbImage image(-32, 3, 2, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, {1, std::numeric_limits<float>::infinity(), 3, 4, 5, 6});
  SampledRow row(image, 0, 3, 0.0, 0.0, 0.0, 1.0);
  row.Locate(0);
  float out[3];
  row.SampleRaw(0, 0.0, out);
  EXPECT_EQ(1.0f, out[0]);
  EXPECT_TRUE(std::isnan(out[2]));
}

TEST(SampledRow, BetweenTheLastColumnAndTheEdgeReadsTheLastColumn) {
  COrbImage image(-32, 3, 3, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  SampledRow row(image, 0, 5, -0.5, -0.75, 0.0, 1.0);
  row.Locate(2);
  EXPECT_EQ(0, row.InsideBegin());
  EXPECT_EQ(3, row.InsideEnd());
  float out[5];
  row.SampleRaw(0, -1.0, out);
  EXPECT_EQ(7.5f, out[0]);
  EXPECT_EQ(8.5f, out[1]);
  EXPECT_EQ(9.0f, out[2]);
  EXPECT_EQ(-1.0f, out[3]);
  EXPECT_EQ(-1.0f, out[4]);
}

// Nothing beside a single column is read: here that would be the infinity of another row.
TEST(SampledRow, ASingleColumnStandsForItsOwnNeighbour) {
  COrbImage image(-32, 1, 3, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, {1, 2, std::numeric_limits<float>::infinity()});
  image.SetStdCtr(0, 0);
  ExpectEqualsSingleSamples(image, Turned(0.0, 0.5, 1.0), 0, 1, 3);
  float value = 0.0f;
  Geometry const g = Turned(0.0, 0.5, 1.0);
  SampledRow row(image, 0, 1, g.dx, g.dy, g.sinA, g.cosA);
  row.Locate(1);
  row.SampleRaw(0, -1.0, &value);
  EXPECT_NEAR(1.5, value, 1e-3);
}

TEST(SampledRow, EmptyAndReversedColumnsDoNothing) {
  COrbImage image(-32, 3, 3, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (int const right : {2, -5}) {
    SampledRow row(image, 2, right, 0.5, 0.5, 0.0, 1.0);
    row.Locate(1);
    float untouched = 42.0f;
    row.SampleRaw(0, 0.0, &untouched);
    EXPECT_EQ(42.0f, untouched);
    EXPECT_EQ(row.InsideBegin(), row.InsideEnd());
  }
}

TEST(SampledRow, FollowsSamplesThatMoveBetweenCalls) {
  Random random(15);
  COrbImage image = RandomImage(random, 21, 8, 3);
  image.SetStdCtr(10, 4);
  COrbImage twin(image);
  MakeHostile(image);
  for (double const degrees : {0.0, 7.0}) {
    Geometry const g = Turned(0.5, 1.5, degrees);
    SampledRow row(image, 0, 21, g.dx, g.dy, g.sinA, g.cosA, g.scale);
    SampledRow twinRow(twin, 0, 21, g.dx, g.dy, g.sinA, g.cosA, g.scale);
    for (int y = 0; y < 8; ++y) {
      std::vector<float> out(21), expected(21);
      row.Locate(y);
      twinRow.Locate(y);
      void* token = nullptr;
      image.GetImageAdr(0, 0, 0, 2, &token);
      image.Unlock(token);  // the samples move
      row.SampleRaw(1, 0.0, out.data());
      twinRow.SampleRaw(1, 0.0, expected.data());
      ASSERT_TRUE(SameBits(expected, out));
    }
  }
}

}  // namespace
}  // namespace orb::test
