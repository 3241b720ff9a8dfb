// Single-sample access: the four scales, the bilinear sample, brightness, writing.
#include <cmath>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/pixels_reference.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

COrbImage Flat(int width, int height, int planes) {
  return COrbImage(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
}

// A mono image of 1 x 1 with the given sample and levels.
COrbImage One(float sample, double min, double max) {
  COrbImage image = Flat(1, 1, 1);
  image.SetPixelGrayRaw(0, 0, sample, 0);
  image.SetLevel(0, min, max);
  return image;
}

int ByteOf(float sample, double min, double max) {
  COrbImage image = One(sample, min, max);
  int const byCoordinates = image.GetPixelGray256(0, 0, 0);
  EXPECT_EQ(byCoordinates, image.GetPixelGray256(&sample, 0)) << sample << ' ' << min << ' ' << max;
  return byCoordinates;
}

testing::AssertionResult Same(float expected, float actual) {
  return SameBits(std::vector{expected}, std::vector{actual});
}

TEST(Constants, KeepTheirLastBits) {
  EXPECT_EQ(0x1.010101010101p-8, orb::kInverse255);
  EXPECT_EQ(1.0 / 255.0, orb::kInverse255);
  EXPECT_EQ(0.017453292519943295, orb::kRadiansPerDegree);
  EXPECT_EQ(57.29577951308232, orb::kDegreesPerRadian);
  EXPECT_EQ(0.299, orb::kRedWeight);
  EXPECT_EQ(0.587, orb::kGreenWeight);
  EXPECT_EQ(0.114, orb::kBlueWeight);
}

TEST(ByteRule, EndsOfTheLevels) {
  EXPECT_EQ(0, ByteOf(100.0f, 100.0, 500.0));
  EXPECT_EQ(255, ByteOf(500.0f, 100.0, 500.0));
  EXPECT_EQ(0, ByteOf(99.0f, 100.0, 500.0));
  EXPECT_EQ(255, ByteOf(501.0f, 100.0, 500.0));
}

TEST(ByteRule, TruncatesAndNeverRounds) {
  EXPECT_EQ(127, ByteOf(300.0f, 100.0, 500.0));
  EXPECT_EQ(254, ByteOf(std::nextafter(500.0f, 0.0f), 100.0, 500.0));
  EXPECT_EQ(0, ByteOf(std::nextafter(100.0f, 200.0f), 100.0, 500.0));
}

// Intended: the lower level is asked first, so it wins where the levels are equal or inverted.
TEST(ByteRule, LowerLevelIsAskedFirst) {
  EXPECT_EQ(0, ByteOf(100.0f, 100.0, 100.0));
  EXPECT_EQ(255, ByteOf(101.0f, 100.0, 100.0));
  EXPECT_EQ(0, ByteOf(150.0f, 200.0, 100.0));
  EXPECT_EQ(0, ByteOf(200.0f, 200.0, 100.0));
  EXPECT_EQ(255, ByteOf(201.0f, 200.0, 100.0));
}

TEST(ByteRule, InfinitiesFallOutsideAndNaNSurvives) {
  EXPECT_EQ(255, ByteOf(std::numeric_limits<float>::infinity(), 0.0, 255.0));
  EXPECT_EQ(0, ByteOf(-std::numeric_limits<float>::infinity(), 0.0, 255.0));
  ByteOf(kNaN, 0.0, 255.0);
  ByteOf(1.0f, -kInfinity, kInfinity);
  ByteOf(1.0f, kNaN, kNaN);
}

TEST(ByteRule, ExplicitBoundsAndScale) {
  COrbImage image = Flat(1, 1, 1);
  float const scale = 255.0f / 400.0f;
  auto byteOf = [&](float v) { return static_cast<int>(image.GetPixelGray256(&v, 100.0f, 500.0f, scale)); };
  EXPECT_EQ(0, byteOf(100.0f));
  EXPECT_EQ(255, byteOf(500.0f));
  EXPECT_EQ(127, byteOf(300.0f));
  EXPECT_EQ(254, byteOf(std::nextafter(500.0f, 0.0f)));
  EXPECT_EQ(0, byteOf(-1e30f));
  EXPECT_EQ(255, byteOf(1e30f));
  float v = 3.0f;
  EXPECT_EQ(0, image.GetPixelGray256(&v, 3.0f, 3.0f, scale));
  EXPECT_EQ(0, image.GetPixelGray256(&v, 5.0f, 1.0f, scale));
  v = 6.0f;
  EXPECT_EQ(255, image.GetPixelGray256(&v, 5.0f, 1.0f, scale));
}

TEST(ByteRule, ExplicitScaleOfAnySizeSurvives) {
  COrbImage image = Flat(1, 1, 1);
  for (float v : {5.0f, kNaN}) {
    for (float scale : {1e30f, -1e30f, kNaN, std::numeric_limits<float>::infinity()}) {
      image.GetPixelGray256(&v, 0.0f, 10.0f, scale);
    }
  }
}

TEST(ByteRule, EqualsThePlainFormulaEverywhere) {
  Random random(21);
  for (int planes : {1, 3}) {
    COrbImage image = RandomImage(random, 40, 12, planes);
    for (int p = 0; p < planes; ++p) {
      for (int y = 0; y < 12; ++y) {
        for (int x = 0; x < 40; ++x) {
          int const expected = reference::ToByte(image, reference::Sample(image, x, y, p), p);
          ASSERT_EQ(expected, image.GetPixelGray256(x, y, p));
          ASSERT_EQ(expected, image.GetPixelGray256(image.GetImageAdr(x, y, p, 1, nullptr), p));
        }
      }
    }
  }
}

// Intended: the interpolated byte is not clamped.
TEST(WrappedByte, WrapsBeyondTheLevels) {
  COrbImage image = Flat(3, 3, 1);
  struct Case {
    float sample;
    int wrapped;
  };
  for (Case c : {Case{300.0f, 44},
                 {256.0f, 0},
                 {255.0f, 255},
                 {-1.5f, 255},
                 {-0.5f, 0},
                 {-3.75f, 253},
                 {-257.0f, 255},
                 {1000.0f, 232},
                 {127.9f, 127}}) {
    SetSamples(image, std::vector<float>(9, c.sample));
    EXPECT_EQ(c.wrapped, image.GetPixelGray256(0.5, 0.5, 0)) << c.sample;
    EXPECT_EQ(c.wrapped, image.GetPixelGray256(1.0, 1.0, 0)) << c.sample;
    EXPECT_EQ(c.wrapped, image.GetPixelGray256(2.0, 2.0, 0)) << c.sample;
  }
}

TEST(WrappedByte, SurvivesNumbersThatAreNoIntegers) {
  COrbImage image = Flat(2, 2, 1);
  for (float v : {kNaN, 1e30f, -1e30f, std::numeric_limits<float>::infinity()}) {
    SetSamples(image, std::vector<float>(4, v));
    image.GetPixelGray256(0.5, 0.5, 0);
    image.GetPixelGray256(0.0, 0.0, 0);
  }
}

TEST(Scales, GrayIsRawAboveTheLowerLevel) {
  COrbImage image = One(120.5f, 100.25, 200.0);
  float sample = 120.5f;
  EXPECT_EQ(20.25f, image.GetPixelGray(0, 0, 0));
  EXPECT_EQ(20.25f, image.GetPixelGray(&sample, 0));
  EXPECT_EQ(120.5f, image.GetPixelGrayRaw(&sample));
  EXPECT_EQ(120.5f, image.GetPixelGrayRaw(0, 0, 0));
}

TEST(Scales, ValuesBeyondTheLevelsAreNotClamped) {
  COrbImage image = One(600.0f, 100.0, 500.0);
  EXPECT_EQ(318.75f, image.GetPixelGray256f(0, 0, 0));
  EXPECT_EQ(318.75, image.To256(600.0, 0));
  EXPECT_EQ(-63.75f, image.To256(0.0f, 0));
  EXPECT_EQ(255, image.GetPixelGray256(0, 0, 0));
}

TEST(Scales, DivideByTheRangeThenMultiply) {
  Random random(22);
  std::uniform_real_distribution<double> value(-1e5, 1e5);
  for (int i = 0; i < 2000; ++i) {
    double const min = value(random);
    COrbImage image = One(0.0f, min, min + value(random));
    double const v = value(random);
    EXPECT_EQ(reference::To256(image, v, 0), image.To256(v, 0));
    EXPECT_EQ(reference::ToRaw(image, v, 0), image.ToRaw(v, 0));
    float const f = static_cast<float>(v);
    EXPECT_EQ(static_cast<float>(reference::To256(image, f, 0)), image.To256(f, 0));
    EXPECT_EQ(static_cast<float>(reference::ToRaw(image, f, 0)), image.ToRaw(f, 0));
    EXPECT_NEAR(v, image.ToRaw(image.To256(v, 0), 0), 1e-9 * std::abs(v) + 1e-8);
    Level const level = LevelOf(image, 0);
    EXPECT_EQ(image.To256(v, 0), level.To256(v));
    EXPECT_EQ(image.ToRaw(v, 0), level.ToRaw(v));
  }
}

TEST(Scales, ExplicitMinAndScale) {
  COrbImage image = Flat(1, 1, 1);
  float v = 16777217.0f;
  EXPECT_EQ(static_cast<float>((static_cast<double>(v) - 0.1f) * 0.3f), image.GetPixelGray256f(&v, 0.1f, 0.3f));
  v = 3.5f;
  EXPECT_EQ(5.0f, image.GetPixelGray256f(&v, 1.0f, 2.0f));
}

TEST(Scales, DegenerateLevelsGiveNumbersThatAreNone) {
  COrbImage image = One(5.0f, 5.0, 5.0);
  EXPECT_TRUE(std::isnan(image.GetPixelGray256f(0, 0, 0)));
  EXPECT_EQ(kInfinity, image.To256(6.0, 0));
  EXPECT_EQ(-kInfinity, image.To256(4.0, 0));
}

TEST(Scales, SinglePlaneFormsEqualThePlainFormula) {
  Random random(23);
  COrbImage image = RandomImage(random, 9, 8, 3);
  for (int p = 0; p < 3; ++p) {
    for (int y = 0; y < 8; ++y) {
      for (int x = 0; x < 9; ++x) {
        double const raw = reference::Sample(image, x, y, p);
        float* const at = image.GetImageAdr(x, y, p, 1, nullptr);
        EXPECT_TRUE(Same(static_cast<float>(raw - image.GetLevelMin(p)), image.GetPixelGray(x, y, p)));
        EXPECT_TRUE(Same(static_cast<float>(raw - image.GetLevelMin(p)), image.GetPixelGray(at, p)));
        EXPECT_TRUE(Same(static_cast<float>(reference::To256(image, raw, p)), image.GetPixelGray256f(x, y, p)));
        EXPECT_TRUE(Same(static_cast<float>(reference::To256(image, raw, p)), image.GetPixelGray256f(at, p)));
      }
    }
  }
}

TEST(Bilinear, EqualsThePlainFormulaEverywhere) {
  Random random(24);
  for (int planes : {1, 3}) {
    for (int width : {2, 3, 17}) {
      for (int height : {2, 3, 12}) {
        COrbImage image = RandomImage(random, width, height, planes);
        std::uniform_real_distribution<double> column(0.0, width + 1.0);
        std::uniform_real_distribution<double> row(0.0, height + 1.0);
        for (int i = 0; i < 400; ++i) {
          double x = column(random);
          double y = row(random);
          if (i % 5 == 0) x = std::floor(x);
          if (i % 7 == 0) y = std::floor(y);
          int const p = i % planes;
          double const expected = reference::Bilinear(image, x, y, p);
          double const on256 = reference::To256(image, expected, p);
          ASSERT_TRUE(Same(static_cast<float>(expected), image.GetPixelGrayRaw(x, y, p))) << x << ' ' << y;
          ASSERT_TRUE(Same(static_cast<float>(expected - image.GetLevelMin(p)), image.GetPixelGray(x, y, p)));
          ASSERT_TRUE(Same(static_cast<float>(on256), image.GetPixelGray256f(x, y, p)));
          ASSERT_EQ(reference::WrapToByte(on256), image.GetPixelGray256(x, y, p)) << on256;
        }
      }
    }
  }
}

TEST(Bilinear, LastSampleComesOutOfTheInterpolation) {
  COrbImage image = Flat(3, 2, 2);
  SetSamples(image, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
  EXPECT_EQ(6.0f, image.GetPixelGrayRaw(2.0, 1.0, 0));
  EXPECT_EQ(12.0f, image.GetPixelGrayRaw(2.0, 1.0, 1));
  EXPECT_EQ(6.0f, image.GetPixelGrayRaw(1e9, 1e300, 0));
  EXPECT_EQ(3.0f, image.GetPixelGrayRaw(2.5, 0.0, 0));
  EXPECT_EQ(4.5f, image.GetPixelGrayRaw(2.7, 0.5, 0));
  // An infinity beside the last column is multiplied by 0.
  SetSamples(image, {1, INFINITY, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
  EXPECT_TRUE(std::isnan(image.GetPixelGrayRaw(2.0, 0.0, 0)));
}

// Intended: both coordinates must be whole, otherwise all four samples are read.
TEST(Bilinear, WholeCoordinatesReadNoNeighbour) {
  COrbImage image = Flat(3, 3, 1);
  SetSamples(image, {1, kNaN, kNaN, 4, kNaN, kNaN, kNaN, kNaN, kNaN});
  EXPECT_EQ(1.0f, image.GetPixelGrayRaw(0.0, 0.0, 0));
  EXPECT_EQ(4.0f, image.GetPixelGrayRaw(0.0, 1.0, 0));
  EXPECT_TRUE(std::isnan(image.GetPixelGrayRaw(0.0, 0.5, 0)));
  EXPECT_TRUE(std::isnan(image.GetPixelGrayRaw(0.5, 0.0, 0)));
}

TEST(Bilinear, MeansOfNeighbours) {
  COrbImage image = Flat(2, 2, 1);
  SetSamples(image, {0, 4, 8, 16});
  EXPECT_EQ(7.0f, image.GetPixelGrayRaw(0.5, 0.5, 0));
  EXPECT_EQ(1.0f, image.GetPixelGrayRaw(0.25, 0.0, 0));
  EXPECT_EQ(6.0f, image.GetPixelGrayRaw(0.0, 0.75, 0));
}

TEST(Bilinear, NoPositionLeavesTheImage) {
  Random random(25);
  for (int width : {1, 2, 5}) {
    for (int height : {1, 2, 5}) {
      COrbImage image = RandomImage(random, width, height, 1);
      for (double x : {-kInfinity, -1e300, -5.0, -0.5, 0.0, 0.5, 4.0, 1e300, kInfinity, static_cast<double>(kNaN)}) {
        for (double y : {-kInfinity, -1e300, -5.0, -0.5, 0.0, 0.5, 4.0, 1e300, kInfinity, static_cast<double>(kNaN)}) {
          image.GetPixelGrayRaw(x, y, 0);
          image.GetPixelGray(x, y, 0);
          image.GetPixelGray256f(x, y, 0);
          image.GetPixelGray256(x, y, 0);
        }
      }
    }
  }
}

TEST(Bilinear, OneSampleStandsForItsNeighbours) {
  COrbImage image = One(42.0f, 0.0, 255.0);
  EXPECT_EQ(42.0f, image.GetPixelGrayRaw(0.0, 0.0, 0));
  EXPECT_EQ(42.0f, image.GetPixelGrayRaw(0.5, 0.5, 0));
  COrbImage column = Flat(1, 3, 1);
  SetSamples(column, {1, 3, 9});
  EXPECT_EQ(2.0f, column.GetPixelGrayRaw(0.0, 0.5, 0));
  EXPECT_EQ(9.0f, column.GetPixelGrayRaw(0.0, 2.0, 0));
}

TEST(Brightness, WeighsThreePlanesByTheirOwnLevels) {
  Random random(26);
  for (int planes : {1, 3}) {
    COrbImage image = RandomImage(random, 12, 9, planes);
    for (int y = 0; y < 9; ++y) {
      for (int x = 0; x < 12; ++x) {
        float const expected = static_cast<float>(reference::Bright256(image, x, y));
        float const expectedRaw = static_cast<float>(reference::ToRaw(image, expected, 0));
        float* const r = image.GetImageAdr(x, y, 0, 1, nullptr);
        float* const g = planes == 3 ? image.GetImageAdr(x, y, 1, 1, nullptr) : nullptr;
        float* const b = planes == 3 ? image.GetImageAdr(x, y, 2, 1, nullptr) : nullptr;
        EXPECT_TRUE(Same(expected, image.GetPixelBright256f(x, y)));
        EXPECT_TRUE(Same(expected, image.GetPixelBright256f(r, g, b)));
        EXPECT_TRUE(Same(expectedRaw, image.GetPixelBrightRaw(x, y)));
        EXPECT_TRUE(Same(expectedRaw, image.GetPixelBrightRaw(r, g, b)));
      }
    }
  }
}

TEST(Brightness, RawComesBackOnTheScaleOfPlaneZero) {
  COrbImage image = Flat(1, 1, 3);
  image.SetLevel(0, 0.0, 1000.0);
  image.SetLevel(1, 0.0, 10.0);
  image.SetLevel(2, 0.0, 1.0);
  SetSamples(image, {1000.0f, 10.0f, 1.0f});
  EXPECT_NEAR(255.0, image.GetPixelBright256f(0, 0), 1e-4);
  EXPECT_NEAR(1000.0, image.GetPixelBrightRaw(0, 0), 1e-3);
}

TEST(Brightness, CalcBrightUsesNoLevels) {
  COrbImage image = Flat(1, 1, 3);
  image.SetLevel(0, 7.0, 9.0);
  Random random(27);
  std::uniform_real_distribution<double> value(-1e3, 1e3);
  for (int i = 0; i < 1000; ++i) {
    double const r = value(random);
    double const g = value(random);
    double const b = value(random);
    EXPECT_EQ(0.587 * g + 0.299 * r + 0.114 * b, image.CalcBright(r, g, b));
    float const fr = static_cast<float>(r);
    float const fg = static_cast<float>(g);
    float const fb = static_cast<float>(b);
    EXPECT_EQ(static_cast<float>(0.587 * fg + 0.299 * fr + 0.114 * fb), image.CalcBright(fr, fg, fb));
  }
}

TEST(Writing, EachScaleStoresItsRaw) {
  Random random(28);
  COrbImage image = RandomImage(random, 4, 3, 3);
  std::uniform_real_distribution<float> value(-300.0f, 600.0f);
  for (int i = 0; i < 500; ++i) {
    int const p = i % 3;
    float const v = value(random);
    float sample = 0.0f;
    image.SetPixelGrayRaw(1, 2, v, p);
    EXPECT_TRUE(Same(v, image.GetPixelGrayRaw(1, 2, p)));
    image.SetPixelGrayRaw(&sample, v);
    EXPECT_TRUE(Same(v, sample));
    float const gray = static_cast<float>(image.GetLevelMin(p) + v);
    image.SetPixelGray(1, 2, v, p);
    EXPECT_TRUE(Same(gray, image.GetPixelGrayRaw(1, 2, p)));
    image.SetPixelGray(&sample, v, p);
    EXPECT_TRUE(Same(gray, sample));
    float const back = static_cast<float>(reference::ToRaw(image, v, p));
    image.SetPixelGray256f(1, 2, v, p);
    EXPECT_TRUE(Same(back, image.GetPixelGrayRaw(1, 2, p)));
    image.SetPixelGray256f(&sample, v, p);
    EXPECT_TRUE(Same(back, sample));
  }
}

TEST(Writing, TouchesNeitherLevelsNorExtrema) {
  COrbImage image = One(1.0f, 10.0, 20.0);
  image.SetPixelGray256f(0, 0, 1e6f, 0);
  EXPECT_EQ(10.0, image.GetLevelMin(0));
  EXPECT_EQ(20.0, image.GetLevelMax(0));
  EXPECT_EQ(0.0, image.GetMaxPixel(0));
}

}  // namespace
}  // namespace orb::test
