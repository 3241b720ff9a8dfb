// CColor: its conversions against the plain transcription, bit for bit, and the numbers that are known of them.
#include <cmath>
#include <limits>
#include <type_traits>

#include <gtest/gtest.h>
#include <orbimg/core/color_model_internal.h>
#include <orbimg/orbimg.h>
#include <tests/reference/color_reference.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

static_assert(std::has_virtual_destructor_v<CColor> && sizeof(CColor) == 10 * sizeof(double));

// Equal, or both not a number.
void ExpectSame(double expected, double actual) {
  if (std::isnan(expected)) {
    EXPECT_TRUE(std::isnan(actual)) << actual;
  } else {
    EXPECT_EQ(expected, actual);
  }
}

void ExpectSameRgbXyz(reference::Color const& expected, CColor const& actual) {
  ExpectSame(expected.r, actual.GetR());
  ExpectSame(expected.g, actual.GetG());
  ExpectSame(expected.b, actual.GetB());
  ExpectSame(expected.x, actual.GetX());
  ExpectSame(expected.y, actual.GetY());
  ExpectSame(expected.z, actual.GetZ());
}

void ExpectSameColor(reference::Color const& expected, CColor const& actual) {
  ExpectSameRgbXyz(expected, actual);
  ExpectSame(expected.l, actual.GetL());
  ExpectSame(expected.a, actual.Geta());
  ExpectSame(expected.bb, actual.Getb());
}

TEST(Color, WhiteIsLightness100WithoutColour) {
  CColor c;
  c.RgbToLab(1, 1, 1);
  EXPECT_NEAR(100.0, c.GetL(), 1e-12);
  EXPECT_NEAR(0.0, c.Geta(), 1e-12);
  EXPECT_NEAR(0.0, c.Getb(), 1e-12);
  EXPECT_NEAR(5.6508, c.GetX(), 1e-14);
  EXPECT_NEAR(5.6508, c.GetY(), 1e-14);
  EXPECT_NEAR(5.6508, c.GetZ(), 1e-14);
}

TEST(Color, BlackIsZeroThroughout) {
  CColor c;
  c.RgbToLab(0, 0, 0);
  for (double v : {c.GetR(), c.GetG(), c.GetB(), c.GetX(), c.GetY(), c.GetZ(), c.GetL(), c.Geta(), c.Getb()}) {
    EXPECT_EQ(0.0, v);
  }
}

TEST(Color, LinearValuesTakeThePlaceOfEncodedOnes) {
  CColor c;
  c.RgbToXyz(0.2, 0.5, 0.7);
  double const k = std::pow((0.2 + 0.5 + 0.7) * 0.3333333333333333, 1.2000000000000002);
  EXPECT_EQ(k * 0.2, c.GetR());
  EXPECT_EQ(k * 0.5, c.GetG());
  EXPECT_EQ(k * 0.7, c.GetB());
  EXPECT_NE(0.2, c.GetR());
  CColor lab;
  lab.RgbToLab(0.2, 0.5, 0.7);
  EXPECT_EQ(k * 0.2, lab.GetR());
}

TEST(Color, XyzAndLabGiveTheColourBack) {
  CColor c;
  c.RgbToLab(0.2, 0.5, 0.7);
  CColor back;
  back.XyzToRgb(c.GetX(), c.GetY(), c.GetZ());
  EXPECT_NEAR(0.2, back.GetR(), 1e-13);
  EXPECT_NEAR(0.5, back.GetG(), 1e-13);
  EXPECT_NEAR(0.7, back.GetB(), 1e-13);
  back.LabToRgb(c.GetL(), c.Geta(), c.Getb());
  EXPECT_NEAR(0.2, back.GetR(), 1e-13);
  EXPECT_NEAR(0.5, back.GetG(), 1e-13);
  EXPECT_NEAR(0.7, back.GetB(), 1e-13);
}

// The gamma keeps the ratio of the channels, which a gamma of each would not.
TEST(Color, GammaKeepsTheRatioOfTheChannels) {
  CColor c;
  c.RgbToXyz(0.1, 0.2, 0.8);
  EXPECT_NEAR(2.0, c.GetG() / c.GetR(), 1e-15);
  EXPECT_NEAR(8.0, c.GetB() / c.GetR(), 1e-14);
}

// X alone: red and blue come out above 0, green below. Red was solved with the green that is cut afterwards.
TEST(Color, NegativeChannelsAreCutAfterAllThreeAreSolved) {
  double const b = 1.0 * 0.0565 * 0.01629590105369801;
  double const g = (0.0 - 5.5943 * b) * 17.699115044247787;
  double const r = 0.0 - 4.5907 * g - 0.0601 * b;
  ASSERT_LT(g, 0.0);
  ASSERT_GT(r, 0.0);
  double const k = std::pow((r + 0.0 + b) * 0.3333333333333333, -0.5454545454545454);
  CColor c;
  c.XyzToRgb(1.0, 0.0, 0.0);
  EXPECT_EQ(0.0, c.GetG());
  EXPECT_EQ(k * r, c.GetR());
  EXPECT_EQ(k * b, c.GetB());
}

TEST(Color, ADarkMeanIsNotRaised) {
  CColor c;
  c.RgbToXyz(0.9e-7, 0.9e-7, 0.9e-7);
  EXPECT_EQ(0.9e-7, c.GetR());
  c.RgbToXyz(-1.0, -2.0, -3.0);
  EXPECT_EQ(-3.0, c.GetB());
  c.RgbToXyz(1.1e-7, 1.1e-7, 1.1e-7);
  EXPECT_GT(1e-15, c.GetR());
}

TEST(Color, SettersConvertNothing) {
  CColor c;
  c.SetRgb(1, 2, 3);
  c.SetXyz(4, 5, 6);
  c.SetLab(7, 8, 9);
  CColor const copy(c);
  CColor assigned;
  assigned = c;
  for (CColor const* each : {static_cast<CColor const*>(&c), &copy, static_cast<CColor const*>(&assigned)}) {
    EXPECT_EQ(1, each->GetR());
    EXPECT_EQ(2, each->GetG());
    EXPECT_EQ(3, each->GetB());
    EXPECT_EQ(4, each->GetX());
    EXPECT_EQ(5, each->GetY());
    EXPECT_EQ(6, each->GetZ());
    EXPECT_EQ(7, each->GetL());
    EXPECT_EQ(8, each->Geta());
    EXPECT_EQ(9, each->Getb());
  }
}

TEST(Color, ConversionsStoreWhatTheyAreGiven) {
  CColor c;
  c.LabToRgb(50.0, 10.0, -20.0);
  EXPECT_EQ(50.0, c.GetL());
  EXPECT_EQ(10.0, c.Geta());
  EXPECT_EQ(-20.0, c.Getb());
  c.XyzToRgb(1.0, 2.0, 3.0);
  EXPECT_EQ(1.0, c.GetX());
  EXPECT_EQ(2.0, c.GetY());
  EXPECT_EQ(3.0, c.GetZ());
}

TEST(Color, TheLimitOfTheRootIsThePowerOfTheLimitOfTheCube) {
  EXPECT_EQ(std::pow(0.008856, 0.3333333333333333), color::kLeastRoot);
}

TEST(Color, EqualsThePlainFormula) {
  Random random(31);
  std::uniform_real_distribution<double> unit(-0.2, 1.3);
  std::uniform_real_distribution<double> tiny(0.0, 3e-7);
  std::uniform_real_distribution<double> lightness(-5.0, 130.0);
  std::uniform_real_distribution<double> chroma(-150.0, 150.0);
  for (int i = 0; i < 20000; ++i) {
    auto& of = i % 7 == 0 ? tiny : unit;
    double const v[3] = {of(random), of(random), of(random)};
    CColor c;
    c.RgbToLab(v[0], v[1], v[2]);
    ExpectSameColor(reference::RgbToLab(v[0], v[1], v[2]), c);
    c.RgbToXyz(v[0], v[1], v[2]);
    ExpectSameRgbXyz(reference::RgbToXyz(v[0], v[1], v[2]), c);
    c.XyzToRgb(v[0], v[1], v[2]);
    ExpectSameRgbXyz(reference::XyzToRgb(v[0], v[1], v[2]), c);
    double const l = i % 5 == 0 ? 7.9 + 0.2 * unit(random) : lightness(random);
    double const a = chroma(random);
    double const b = chroma(random);
    c.LabToRgb(l, a, b);
    ExpectSameColor(reference::LabToRgb(l, a, b), c);
  }
}

TEST(Color, EqualsThePlainFormulaForNumbersThatAreNone) {
  using Limits = std::numeric_limits<double>;
  double const specials[] = {0.0,
                             -0.0,
                             1.0,
                             -1.0,
                             1e300,
                             -1e300,
                             Limits::infinity(),
                             -Limits::infinity(),
                             Limits::quiet_NaN(),
                             Limits::denorm_min()};
  for (double r : specials) {
    for (double g : specials) {
      for (double b : specials) {
        CColor c;
        c.RgbToLab(r, g, b);
        ExpectSameColor(reference::RgbToLab(r, g, b), c);
        c.LabToRgb(r, g, b);
        ExpectSameColor(reference::LabToRgb(r, g, b), c);
      }
    }
  }
}

}  // namespace
}  // namespace orb::test
