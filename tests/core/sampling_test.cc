// The transformed sampler and the rectangle copy.
#include <climits>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/pixel_blt_reference.h>
#include <tests/reference/pixels_reference.h>
#include <tests/reference/sampler_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

struct Placement {
  int x;
  int y;
  double dx;
  double dy;
  double sinA;
  double cosA;
  double scale;

  reference::Place Place() const { return {dx, dy, sinA, cosA, scale}; }
};

constexpr double kOutside = -12345.0;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Found {
  float value;
  int outside = 7;
  double sx = 7.0;
  double sy = 7.0;
};

Found Gray256f(COrbImage& image, Placement const& a, int plane, int nearest) {
  Found found{};
  found.value = image.GetPixelGray256f(a.x, a.y, a.dx, a.dy, a.sinA, a.cosA, a.scale, plane, kOutside, nearest,
                                       &found.outside, &found.sx, &found.sy);
  return found;
}

Found GrayRaw(COrbImage& image, Placement const& a, int plane, int nearest) {
  Found found{};
  found.value = image.GetPixelGrayRaw(a.x, a.y, a.dx, a.dy, a.sinA, a.cosA, a.scale, plane, kOutside, nearest,
                                      &found.outside, &found.sx, &found.sy);
  return found;
}

testing::AssertionResult Agrees(reference::Sampled const& expected, Found const& found) {
  if (expected.sx != found.sx || expected.sy != found.sy) {
    return testing::AssertionFailure() << "position " << found.sx << ", " << found.sy << " for " << expected.sx << ", "
                                       << expected.sy;
  }
  if (found.outside != (expected.outside ? 1 : 0)) {
    return testing::AssertionFailure() << "isOutside " << found.outside;
  }
  return SameBits(std::vector{static_cast<float>(expected.value[0])}, std::vector{found.value});
}

Placement Shift(int x, int y, double dx, double dy) { return {x, y, dx, dy, 0.0, 1.0, 1.0}; }

COrbImage Ramp(int width, int height, int planes = 1) {
  COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
  for (int p = 0; p < planes; ++p) {
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) image.SetPixelGrayRaw(x, y, static_cast<float>(1000 * p + 100 * y + x + 1), p);
    }
  }
  return image;
}

TEST(Sampler, PlainShiftNeedsNoCentre) {
  COrbImage image = Ramp(12, 4);
  for (bool centred : {false, true}) {
    if (centred) image.SetStdCtr(3.3, 1.1);
    Found const found = GrayRaw(image, Shift(10, 2, 2.5, 0.0), 0, 0);
    EXPECT_EQ(7.5, found.sx);
    EXPECT_EQ(2.0, found.sy);
    EXPECT_EQ(208.5f, found.value);
    EXPECT_EQ(0, found.outside);
  }
}

TEST(Sampler, QuarterTurnLooksUpward) {
  COrbImage image = Ramp(12, 12);
  image.SetStdCtr(5.0, 6.0);
  Found const found = GrayRaw(image, {6, 6, 0.0, 0.0, 1.0, 0.0, 1.0}, 0, 0);
  EXPECT_EQ(5.0, found.sx);
  EXPECT_EQ(5.0, found.sy);
  EXPECT_EQ(506.0f, found.value);
}

TEST(Sampler, ScaleAloneMagnifiesAboutTheCentre) {
  COrbImage image = Ramp(12, 12);
  image.SetStdCtr(5.5, 6.5);
  Found const found = GrayRaw(image, {7, 8, 0.5, 0.25, 0.0, 1.0, 2.0}, 0, 0);
  EXPECT_EQ((7 - 5.5 - 0.5) * 2.0 + 5.5, found.sx);
  EXPECT_EQ((8 - 6.5 - 0.25) * 2.0 + 6.5, found.sy);
}

TEST(Sampler, OutParametersMayBeMissing) {
  COrbImage image = Ramp(5, 5, 3);
  double r = 0.0;
  double g = 0.0;
  double b = 0.0;
  for (int x : {2, -9}) {
    image.GetPixelGray256f(x, 2, 0.5, 0.5, 0.0, 1.0, 1.0, -1, 0.0, 0, nullptr, nullptr, nullptr);
    image.GetPixelGrayRaw(x, 2, 0.5, 0.5, 0.0, 1.0, 1.0, -1, 0.0, 1, nullptr, nullptr, nullptr);
    image.GetPixelRgb256f(x, 2, 0.5, 0.5, 0.0, 1.0, 1.0, &r, &g, &b, 0.0, nullptr, nullptr, nullptr);
    image.GetPixelRgbRaw(x, 2, 0.5, 0.5, 0.0, 1.0, 1.0, &r, &g, &b, 0.0, nullptr, nullptr, nullptr);
  }
}

TEST(Sampler, PositionIsToldEvenOutside) {
  COrbImage image = Ramp(5, 5);
  for (int nearest : {0, 1}) {
    for (Found const& found : {GrayRaw(image, Shift(-30, 2, 0.25, 0.0), 0, nearest),
                               Gray256f(image, Shift(-30, 2, 0.25, 0.0), 0, nearest)}) {
      EXPECT_EQ(1, found.outside);
      EXPECT_EQ(-30.25, found.sx);
      EXPECT_EQ(2.0, found.sy);
      EXPECT_EQ(static_cast<float>(kOutside), found.value);
    }
  }
}

TEST(Sampler, JustBeforeTheLastColumnRoundsToIt) {
  COrbImage image = Ramp(5, 3);
  Placement const at = Shift(5, 1, 0.6, 0.0);  // width - 0.6
  EXPECT_EQ(105.0f, GrayRaw(image, at, 0, 1).value);
  EXPECT_EQ(105.0f, Gray256f(image, at, 0, 1).value);
}

// Intended: raw rounds before it asks, the 256-scale asks the real position.
TEST(Sampler, NearestFormsTestInsideDifferently) {
  COrbImage image = Ramp(5, 3);
  for (double x : {-0.2, -0.3}) {
    EXPECT_EQ(1, Gray256f(image, Shift(0, 1, -x, 0.0), 0, 1).outside);
    EXPECT_EQ(0, GrayRaw(image, Shift(0, 1, -x, 0.0), 0, 1).outside);
    EXPECT_EQ(101.0f, GrayRaw(image, Shift(0, 1, -x, 0.0), 0, 1).value);
    EXPECT_EQ(1, Gray256f(image, Shift(2, 0, 0.0, -x), 0, 1).outside);
    EXPECT_EQ(3.0f, GrayRaw(image, Shift(2, 0, 0.0, -x), 0, 1).value);
  }
  Placement const past = Shift(5, 1, 0.2, 0.0);  // width - 0.2
  EXPECT_EQ(1, GrayRaw(image, past, 0, 1).outside);
  Found const found = Gray256f(image, past, 0, 1);
  EXPECT_EQ(0, found.outside);
  EXPECT_EQ(201.0f, found.value);  // the first sample of the next row
}

// Intended: rounding truncates toward zero, so it reaches down to -1.5.
TEST(Sampler, NearestRawReachesBelowZeroByTruncation) {
  COrbImage image = Ramp(5, 3);
  EXPECT_EQ(1.0f, GrayRaw(image, Shift(0, 0, 1.25, 1.25), 0, 1).value);
  EXPECT_EQ(0, GrayRaw(image, Shift(0, 0, 1.25, 1.25), 0, 1).outside);
  EXPECT_EQ(1, GrayRaw(image, Shift(0, 0, 1.5, 0.0), 0, 1).outside);
}

TEST(Sampler, NearestReadsOnePastTheStoreAsZero) {
  COrbImage image = Ramp(5, 3);
  image.SetLevel(0, 0.0, 255.0);
  Found const found = Gray256f(image, Shift(5, 2, 0.25, 0.0), 0, 1);
  EXPECT_EQ(0, found.outside);
  EXPECT_EQ(0.0f, found.value);
}

TEST(Sampler, NearestPastTheLastRowStaysInTheStore) {
  for (int planes : {1, 3}) {
    COrbImage image = Ramp(5, 3, planes);
    for (int x = 0; x < 6; ++x) {
      for (int plane : {-1, 0, planes - 1}) {
        Found const found = Gray256f(image, Shift(x, 3, 0.25, 0.25), plane, 1);
        EXPECT_EQ(x == 0, found.outside == 1);
        EXPECT_TRUE(std::isfinite(found.value));
      }
    }
  }
}

TEST(Sampler, MemoryOfTheCallersIsNotReadBeyondItsEnd) {
  std::vector<float> samples(15);
  for (int i = 0; i < 15; ++i) samples[static_cast<std::size_t>(i)] = static_cast<float>(i + 1);
  COrbImage image;
  WrapSamples(image, samples.data(), 5, 3, 1);
  for (double dy : {0.0, 0.25}) {
    for (int x = 1; x < 6; ++x) {
      Found const found = Gray256f(image, Shift(x, dy == 0.0 ? 2 : 3, 0.25, dy), 0, 1);
      EXPECT_EQ(0, found.outside);
      EXPECT_TRUE(std::isfinite(found.value));
    }
  }
}

TEST(Sampler, LastColumnAndRowAreHeld) {
  COrbImage image = Ramp(5, 3);
  Found const found = GrayRaw(image, Shift(5, 3, 0.5, 0.75), 0, 0);
  EXPECT_EQ(0, found.outside);
  EXPECT_EQ(205.0f, found.value);
  EXPECT_EQ(1, GrayRaw(image, Shift(5, 2, 0.0, 0.0), 0, 0).outside);
  EXPECT_EQ(1, GrayRaw(image, Shift(4, 3, 0.0, 0.0), 0, 0).outside);
}

TEST(Sampler, MonoImageIgnoresThePlane) {
  COrbImage image = Ramp(5, 3);
  for (int plane : {-1, 0, 1, 2, 9}) {
    for (int nearest : {0, 1}) {
      EXPECT_EQ(103.0f, GrayRaw(image, Shift(2, 1, 0.0, 0.0), plane, nearest).value);
      EXPECT_EQ(103.0f, Gray256f(image, Shift(2, 1, 0.0, 0.0), plane, nearest).value);
    }
  }
}

TEST(Sampler, ColourFormsOfAMonoImageAreThreeTimesTheSame) {
  COrbImage image = Ramp(5, 3);
  image.SetLevel(0, 3.0, 77.0);
  double r = 0.0;
  double g = 1.0;
  double b = 2.0;
  image.GetPixelRgb256f(2, 1, 0.25, 0.5, 0.0, 1.0, 1.0, &r, &g, &b, 0.0, nullptr, nullptr, nullptr);
  EXPECT_EQ(r, g);
  EXPECT_EQ(r, b);
  EXPECT_EQ(reference::To256(image, reference::Bilinear(image, 1.75, 0.5, 0), 0), r);
  image.GetPixelRgbRaw(2, 1, 0.25, 0.5, 0.0, 1.0, 1.0, &r, &g, &b, 0.0, nullptr, nullptr, nullptr);
  EXPECT_EQ(r, g);
  EXPECT_EQ(r, b);
  EXPECT_EQ(reference::Bilinear(image, 1.75, 0.5, 0), r);
}

std::vector<Placement> RandomPlacements(Random& random, int width, int height, int count) {
  std::uniform_int_distribution<int> column(-3, width + 3);
  std::uniform_int_distribution<int> row(-3, height + 3);
  std::uniform_real_distribution<double> shift(-3.0, 3.0);
  std::uniform_real_distribution<double> angle(-4.0, 4.0);
  std::uniform_real_distribution<double> scale(0.5, 2.0);
  std::vector<Placement> all;
  for (int i = 0; i < count; ++i) {
    Placement at{column(random), row(random), shift(random), shift(random), 0.0, 1.0, 1.0};
    if (i % 4 == 1) at.scale = scale(random);
    if (i % 4 >= 2) {
      double const a = angle(random);
      at.sinA = std::sin(a);
      at.cosA = std::cos(a);
      if (i % 4 == 3) at.scale = scale(random);
    }
    if (i % 5 == 0) at.dx = std::floor(at.dx);
    if (i % 7 == 0) at.dy = std::floor(at.dy);
    all.push_back(at);
  }
  return all;
}

TEST(Sampler, GrayFormsEqualThePlainFormulaEverywhere) {
  Random random(41);
  for (int planes : {1, 3}) {
    for (int width : {2, 3, 21}) {
      for (int height : {2, 3, 12}) {
        COrbImage image = RandomImage(random, width, height, planes);
        image.SetStdCtr(width * 0.4, height * 0.6);
        for (Placement const& at : RandomPlacements(random, width, height, 600)) {
          for (int plane = -1; plane < planes; ++plane) {
            for (int nearest : {0, 1}) {
              ASSERT_TRUE(Agrees(reference::PixelGrayRaw(image, at.x, at.y, at.Place(), plane, kOutside, nearest != 0),
                                 GrayRaw(image, at, plane, nearest)))
                  << "raw, plane " << plane << " nearest " << nearest;
              Found const in256 = Gray256f(image, at, plane, nearest);
              if (nearest != 0 && in256.sy >= height - 0.5) continue;  // rounds below the last row
              ASSERT_TRUE(
                  Agrees(reference::PixelGray256f(image, at.x, at.y, at.Place(), plane, kOutside, nearest != 0), in256))
                  << "256, plane " << plane << " nearest " << nearest;
            }
          }
        }
      }
    }
  }
}

TEST(Sampler, ColourFormsEqualThePlainFormulaEverywhere) {
  Random random(42);
  for (int planes : {1, 3}) {
    COrbImage image = RandomImage(random, 17, 9, planes);
    image.SetStdCtr(8.2, 3.9);
    for (Placement const& a : RandomPlacements(random, 17, 9, 3000)) {
      for (bool raw : {false, true}) {
        reference::Sampled const expected = raw ? reference::PixelRgbRaw(image, a.x, a.y, a.Place(), kOutside)
                                                : reference::PixelRgb256f(image, a.x, a.y, a.Place(), kOutside);
        double r = 0.0;
        double g = 0.0;
        double b = 0.0;
        double sx = 0.0;
        double sy = 0.0;
        int outside = 7;
        if (raw) {
          image.GetPixelRgbRaw(a.x, a.y, a.dx, a.dy, a.sinA, a.cosA, a.scale, &r, &g, &b, kOutside, &outside, &sx, &sy);
        } else {
          image.GetPixelRgb256f(a.x, a.y, a.dx, a.dy, a.sinA, a.cosA, a.scale, &r, &g, &b, kOutside, &outside, &sx,
                                &sy);
        }
        ASSERT_EQ(expected.outside ? 1 : 0, outside);
        ASSERT_EQ(expected.sx, sx);
        ASSERT_EQ(expected.sy, sy);
        ASSERT_EQ(expected.value[0], r);
        ASSERT_EQ(expected.value[1], g);
        ASSERT_EQ(expected.value[2], b);
      }
    }
  }
}

TEST(Sampler, WholeShiftsAreOnlyWidened) {
  Random random(43);
  COrbImage image = RandomImage(random, 11, 7, 3);
  image.SetStdCtr(4.5, 3.5);
  double const s = std::sin(0.3);
  double const c = std::cos(0.3);
  for (int y = 0; y < 7; ++y) {
    for (int x = 0; x < 11; ++x) {
      for (int nearest : {0, 1}) {
        EXPECT_EQ(image.GetPixelGrayRaw(x, y, 2.0, -1.0, s, c, 1.5, -1, 0.0, nearest, nullptr, nullptr, nullptr),
                  image.GetPixelGrayRaw(x, y, 2, -1, s, c, 1.5, -1, 0.0, nearest, nullptr, nullptr, nullptr));
        EXPECT_EQ(image.GetPixelGray256f(x, y, 2.0, -1.0, s, c, 1.5, 1, 0.0, nearest, nullptr, nullptr, nullptr),
                  image.GetPixelGray256f(x, y, 2, -1, s, c, 1.5, 1, 0.0, nearest, nullptr, nullptr, nullptr));
      }
      double v[3];
      double w[3];
      image.GetPixelRgbRaw(x, y, 2.0, -1.0, s, c, 1.0, &v[0], &v[1], &v[2], 0.0, nullptr, nullptr, nullptr);
      image.GetPixelRgbRaw(x, y, 2, -1, s, c, 1.0, &w[0], &w[1], &w[2], 0.0, nullptr, nullptr, nullptr);
      for (int p = 0; p < 3; ++p) EXPECT_EQ(v[p], w[p]);
      image.GetPixelRgb256f(x, y, 2.0, -1.0, s, c, 1.0, &v[0], &v[1], &v[2], 0.0, nullptr, nullptr, nullptr);
      image.GetPixelRgb256f(x, y, 2, -1, s, c, 1.0, &w[0], &w[1], &w[2], 0.0, nullptr, nullptr, nullptr);
      for (int p = 0; p < 3; ++p) EXPECT_EQ(v[p], w[p]);
    }
  }
}

TEST(Sampler, NoNumbersLeaveTheImage) {
  Random random(44);
  for (int width : {1, 2, 5}) {
    for (int height : {1, 3}) {
      for (int planes : {1, 3}) {
        COrbImage image = RandomImage(random, width, height, planes);
        for (double v : {kNaN, kInfinity, -kInfinity, 1e300, -1e300, 2147483648.0, -2147483649.0, 0.75, -0.75}) {
          std::vector<Placement> const all = {{0, 0, v, 0.0, 0.0, 1.0, 1.0},          {0, 0, 0.0, v, 0.0, 1.0, 1.0},
                                              {0, 0, 0.0, 0.0, v, 1.0, 1.0},          {0, 0, 0.0, 0.0, 0.0, v, 1.0},
                                              {0, 0, 0.0, 0.0, 0.0, 1.0, v},          {INT_MAX, INT_MIN, v, v, v, v, v},
                                              {INT_MIN, INT_MAX, v, v, 0.0, 1.0, 1.0}};
          for (Placement const& at : all) {
            for (int nearest : {0, 1}) {
              GrayRaw(image, at, -1, nearest);
              Gray256f(image, at, 0, nearest);
            }
          }
        }
      }
    }
  }
  COrbImage image = Ramp(4, 4);
  EXPECT_EQ(1, GrayRaw(image, Shift(0, 0, kNaN, 0.0), 0, 1).outside);
  EXPECT_EQ(1, GrayRaw(image, Shift(0, 0, kNaN, 0.0), 0, 0).outside);
  EXPECT_EQ(1, GrayRaw(image, Shift(0, 0, 1e300, 0.0), 0, 1).outside);
  EXPECT_EQ(1, GrayRaw(image, Shift(0, 0, -1e300, 0.0), 0, 1).outside);
  EXPECT_EQ(1, Gray256f(image, Shift(0, 0, 0.0, kNaN), 0, 1).outside);
}

TEST(Sampler, WorksOnAHostileStore) {
  Random random(45);
  COrbImage plain = RandomImage(random, 9, 6, 3);
  COrbImage hostile(plain);
  MakeHostile(hostile);
  for (Placement const& at : RandomPlacements(random, 9, 6, 300)) {
    EXPECT_EQ(GrayRaw(plain, at, -1, 0).value, GrayRaw(hostile, at, -1, 0).value);
    EXPECT_EQ(Gray256f(plain, at, 1, 0).value, Gray256f(hostile, at, 1, 0).value);
  }
  EXPECT_EQ(0, LocksLeft(hostile));
}

struct BltCase {
  int dstX, dstY, width, height, srcX, srcY;
};

void ExpectSameBlt(Random& random, COrbImage& src, int dstWidth, int dstHeight, BltCase const& c, bool convert) {
  COrbImage dst = RandomImage(random, dstWidth, dstHeight, src.GetPlanes());
  FillJunk(dst);
  COrbImage expected(dst);
  reference::PixelBlt(expected, c.dstX, c.dstY, c.width, c.height, src, c.srcX, c.srcY, convert);
  dst.PixelBlt(c.dstX, c.dstY, c.width, c.height, &src, c.srcX, c.srcY, convert ? 1 : 0);
  EXPECT_TRUE(SameBits(expected, dst)) << c.dstX << ' ' << c.dstY << ' ' << c.width << ' ' << c.height << ' ' << c.srcX
                                       << ' ' << c.srcY << ' ' << convert;
  EXPECT_TRUE(SameLevels(expected, dst));
}

TEST(PixelBlt, EqualsThePlainFormulaEverywhere) {
  Random random(46);
  std::uniform_int_distribution<int> place(-6, 20);
  for (int planes : {1, 3}) {
    COrbImage src = RandomImage(random, 13, 8, planes);
    for (int i = 0; i < 400; ++i) {
      BltCase const c{place(random), place(random), place(random), place(random), place(random), place(random)};
      ExpectSameBlt(random, src, 11, 9, c, i % 2 == 0);
    }
  }
}

TEST(PixelBlt, ExtremeArgumentsStayInside) {
  Random random(47);
  COrbImage src = RandomImage(random, 6, 5, 3);
  for (int a : {INT_MIN, -1, 0, 3, INT_MAX}) {
    for (int b : {INT_MIN, -1, 0, 3, INT_MAX}) {
      ExpectSameBlt(random, src, 4, 7, {a, b, INT_MAX, INT_MAX, b, a}, false);
      ExpectSameBlt(random, src, 4, 7, {0, 0, a, b, 0, 0}, true);
    }
  }
}

TEST(PixelBlt, NegativeSizeCopiesNothing) {
  COrbImage src = Ramp(5, 5);
  COrbImage dst = Ramp(5, 5);
  FillJunk(dst);
  COrbImage const before(dst);
  dst.PixelBlt(0, 0, -3, 2, &src, 0, 0, 0);
  dst.PixelBlt(0, 0, 2, -3, &src, 0, 0, 0);
  EXPECT_TRUE(SameBits(before, dst));
}

// Intended: a negative origin is moved to 0 and the requested size stays.
TEST(PixelBlt, NegativeOriginKeepsTheSize) {
  COrbImage src = Ramp(5, 5);
  COrbImage dst(-32, 5, 5, 1, 1.0, 0.0, 1, nullptr, nullptr);
  dst.PixelBlt(-2, -1, 3, 2, &src, -7, 1, 0);
  EXPECT_EQ(101.0f, dst.GetPixelGrayRaw(0, 0, 0));
  EXPECT_EQ(103.0f, dst.GetPixelGrayRaw(2, 0, 0));
  EXPECT_EQ(203.0f, dst.GetPixelGrayRaw(2, 1, 0));
  EXPECT_EQ(0.0f, dst.GetPixelGrayRaw(3, 0, 0));
  EXPECT_EQ(0.0f, dst.GetPixelGrayRaw(0, 2, 0));
}

TEST(PixelBlt, OtherPlaneCountChangesNothing) {
  COrbImage src = Ramp(5, 5, 3);
  COrbImage dst = Ramp(5, 5, 1);
  COrbImage const before(dst);
  dst.PixelBlt(0, 0, 5, 5, &src, 1, 1, 0);
  EXPECT_TRUE(SameBits(before, dst));
}

TEST(PixelBlt, CopiesWithinOneImageSampleBySample) {
  for (BltCase const& c : {BltCase{1, 0, 9, 4, 0, 0}, {0, 0, 9, 4, 1, 0}, {0, 1, 9, 4, 0, 0}, {2, 1, 5, 3, 1, 0}}) {
    for (bool convert : {false, true}) {
      COrbImage image = Ramp(9, 6);
      image.SetLevel(0, 3.0, 1000.0);
      COrbImage expected(image);
      reference::PixelBlt(expected, c.dstX, c.dstY, c.width, c.height, expected, c.srcX, c.srcY, convert);
      image.PixelBlt(c.dstX, c.dstY, c.width, c.height, &image, c.srcX, c.srcY, convert ? 1 : 0);
      EXPECT_TRUE(SameBits(expected, image)) << c.dstX << ' ' << c.dstY << ' ' << c.srcX << ' ' << convert;
    }
  }
}

TEST(PixelBlt, RawCopyKeepsEveryBit) {
  COrbImage src = Ramp(3, 1);
  SetSamples(src, {-0.0f, INFINITY, std::nanf("")});
  COrbImage dst = Ramp(3, 1);
  dst.PixelBlt(0, 0, 3, 1, &src, 0, 0, 0);
  EXPECT_TRUE(SameBits(src, dst));
}

}  // namespace
}  // namespace orb::test
