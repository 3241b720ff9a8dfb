// CImgApertureMark: the outlines, the caps, and the counts inside.
#include <climits>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/aperture_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using Distances = std::vector<int>;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

COrbImage Ones(int width, int height) {
  COrbImage image(-32, width, height, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, std::vector<float>(static_cast<std::size_t>(image.GetPixelCount()), 1.0f));
  return image;
}

struct Geometry {
  double cx, cy, outerX, outerY, innerX, innerY;
};

void Set(CImgApertureMark& mark, COrbImage& image, Geometry const& g) {
  mark.Set(&image, g.cx, g.cy, g.outerX, g.outerY, g.innerX, g.innerY);
}

bool SameNumber(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

void ExpectTheReference(COrbImage& image, Geometry const& g) {
  SCOPED_TRACE(testing::Message() << g.cx << ' ' << g.cy << " outer " << g.outerX << ' ' << g.outerY << " inner "
                                  << g.innerX << ' ' << g.innerY);
  reference::Aperture const expected(image, g.cx, g.cy, g.outerX, g.outerY, g.innerX, g.innerY);
  CImgApertureMark mark;
  Set(mark, image, g);
  OrbTestAccess::Outlines const outlines = OrbTestAccess::OutlinesOf(mark);
  EXPECT_EQ(expected.outerRow, outlines.outerRow);
  EXPECT_EQ(expected.innerRow, outlines.innerRow);
  EXPECT_EQ(expected.outerColumn, outlines.outerColumn);
  EXPECT_EQ(expected.innerColumn, outlines.innerColumn);
  EXPECT_EQ(expected.num, mark.GetNum());
  EXPECT_EQ(expected.sum, mark.GetSum());
  EXPECT_TRUE(SameNumber(expected.variance, mark.GetVar()) || expected.num == 0);
  EXPECT_TRUE(SameNumber(expected.deviation, mark.GetStd()) || expected.num == 0);
  for (int y = -3; y < image.GetHeight() + 3; ++y) {
    for (int x = -3; x < image.GetWidth() + 3; ++x) {
      ASSERT_EQ(expected.HasPixel(x, y) ? 1 : 0, mark.PtInRgn(x, y)) << x << ',' << y;
    }
  }
}

TEST(ApertureMark, BeforeSetIsEmpty) {
  CImgApertureMark mark;
  EXPECT_EQ(0, mark.GetNum());
  EXPECT_EQ(0.0, mark.GetSum());
  EXPECT_EQ(0.0, mark.GetVar());
  EXPECT_EQ(0.0, mark.GetStd());
  EXPECT_EQ(0, mark.PtInRgn(0, 0));
  EXPECT_EQ(-1.0, OrbTestAccess::OutlinesOf(mark).outerX);
  EXPECT_EQ(-1.0, OrbTestAccess::OutlinesOf(mark).innerY);
}

TEST(ApertureMark, SmallCircles) {
  COrbImage image = Ones(21, 21);
  CImgApertureMark mark;
  Set(mark, image, {10, 10, 0.0, 0.0, -1, -1});
  EXPECT_EQ(1, mark.GetNum());
  Set(mark, image, {10, 10, 1.0, 1.0, -1, -1});
  EXPECT_EQ(9, mark.GetNum());
  Set(mark, image, {10, 10, 2.0, 2.0, -1, -1});
  EXPECT_EQ((Distances{2, 2, 1}), OrbTestAccess::OutlinesOf(mark).outerRow);
  EXPECT_EQ(21, mark.GetNum());
  Set(mark, image, {10, 10, 3.0, 3.0, -1, -1});
  EXPECT_EQ((Distances{3, 3, 2, 1}), OrbTestAccess::OutlinesOf(mark).outerRow);
  EXPECT_EQ((Distances{3, 3, 2, 1}), OrbTestAccess::OutlinesOf(mark).outerColumn);
  EXPECT_EQ((Distances{-1, -1, -1, -1}), OrbTestAccess::OutlinesOf(mark).innerRow);
  EXPECT_EQ(37, mark.GetNum());
}

TEST(ApertureMark, EllipsesAreSqueezedCircles) {
  COrbImage image = Ones(21, 21);
  CImgApertureMark mark;
  Set(mark, image, {10, 10, 2.0, 4.0, -1, -1});
  EXPECT_EQ((Distances{2, 2, 2, 1, 1}), OrbTestAccess::OutlinesOf(mark).outerRow);
  EXPECT_EQ((Distances{4, 4, 2}), OrbTestAccess::OutlinesOf(mark).outerColumn);
  EXPECT_EQ(37, mark.GetNum());
  Set(mark, image, {10, 10, 4.0, 2.0, -1, -1});
  EXPECT_EQ((Distances{4, 4, 2}), OrbTestAccess::OutlinesOf(mark).outerRow);
  EXPECT_EQ((Distances{2, 2, 2, 1, 1}), OrbTestAccess::OutlinesOf(mark).outerColumn);
}

TEST(ApertureMark, AHoleKeepsItsOutline) {
  // The outline of the hole belongs to the hole: a ring of 3 around a hole of 2 has the pixels of 3 less those of 2.
  COrbImage image = Ones(21, 21);
  CImgApertureMark mark;
  Set(mark, image, {10, 10, 3.0, 3.0, 2.0, 2.0});
  EXPECT_EQ((Distances{2, 2, 1, -1}), OrbTestAccess::OutlinesOf(mark).innerRow);
  EXPECT_EQ(37 - 21, mark.GetNum());
  EXPECT_EQ(0, mark.PtInRgn(12, 10));
  EXPECT_EQ(1, mark.PtInRgn(13, 10));
  EXPECT_EQ(0, mark.PtInRgn(14, 10));
  // A hole of radius 0 is one pixel, one of less than -1 is none; -0.5 truncates to 0.
  Set(mark, image, {10, 10, 3.0, 3.0, 0.0, 0.0});
  EXPECT_EQ(36, mark.GetNum());
  Set(mark, image, {10, 10, 3.0, 3.0, -0.5, -0.5});
  EXPECT_EQ(36, mark.GetNum());
  Set(mark, image, {10, 10, 3.0, 3.0, -1.0, 2.0});
  EXPECT_EQ(37, mark.GetNum());
  // A hole as large as the aperture, or larger, leaves nothing.
  Set(mark, image, {10, 10, 3.0, 3.0, 3.0, 3.0});
  EXPECT_EQ(0, mark.GetNum());
  for (double const hole : {40.0, 1e5, 1e9, kInfinity}) {
    Set(mark, image, {10, 10, 3.0, 3.0, hole, hole});
    EXPECT_EQ(0, mark.GetNum()) << hole;
  }
}

TEST(ApertureMark, CountsSumAndSpread) {
  COrbImage image = Ones(5, 5);
  SetSamples(image, {9, 9, 9, 9, 9,  //
                     9, 2, 4, 4, 9,  //
                     9, 4, 5, 5, 9,  //
                     9, 7, 9, 5, 9,  //
                     9, 9, 9, 9, 9});
  CImgApertureMark mark;
  Set(mark, image, {2, 2, 1.0, 1.0, -1, -1});
  EXPECT_EQ(9, mark.GetNum());
  EXPECT_EQ(45.0, mark.GetSum());
  EXPECT_EQ(32.0 / 9.0, mark.GetVar());
  EXPECT_EQ(std::sqrt(32.0 / 9.0), mark.GetStd());
  Set(mark, image, {2, 2, 1.0, 1.0, 0.0, 0.0});
  EXPECT_EQ(8, mark.GetNum());
  EXPECT_EQ(40.0, mark.GetSum());
  EXPECT_EQ(4.0, mark.GetVar());
  EXPECT_EQ(2.0, mark.GetStd());
}

TEST(ApertureMark, ValuesAreTruncatedBeforeTheyAreSummed) {
  COrbImage image = Ones(3, 3);
  SetSamples(image, {1.9f, 1.9f, 1.9f, -1.9f, -0.9f, 0.9f, 2.0f, 0.0f, 0.0f});
  CImgApertureMark mark;
  Set(mark, image, {1, 1, 1.0, 1.0, -1, -1});
  EXPECT_EQ(1.0 + 1.0 + 1.0 - 1.0 + 2.0, mark.GetSum());
  image.SetBscale(2.0);
  image.SetBzero(0.5);
  Set(mark, image, {1, 1, 1.0, 1.0, -1, -1});  // 4.3 4.3 4.3 -3.3 -1.3 2.3 4.5 0.5 0.5
  EXPECT_EQ(4.0 + 4.0 + 4.0 - 3.0 - 1.0 + 2.0 + 4.0, mark.GetSum());
}

TEST(ApertureMark, ReadsPlaneZeroAlone) {
  COrbImage image(-32, 3, 3, 3, 1.0, 0.0, 1, nullptr, nullptr);
  for (int p = 0; p < 3; ++p) {
    for (int i = 0; i < 9; ++i) image.SetPixelGrayRaw(i % 3, i / 3, p == 0 ? 2.0f : 100.0f, p);
  }
  CImgApertureMark mark;
  Set(mark, image, {1, 1, 1.0, 1.0, -1, -1});
  EXPECT_EQ(18.0, mark.GetSum());
}

template <typename Sample>
void ExpectSumOf(int bitsPixel, int isSigned, Sample sample, double expected) {
  COrbImage image(bitsPixel, 5, 5, 1, 2.0, 10.0, isSigned, nullptr, nullptr);
  for (int y = 1; y < 4; ++y) {
    for (int x = 1; x < 4; ++x) *reinterpret_cast<Sample*>(image.GetImageAdr(x, y, 0, 0, nullptr)) = sample;
  }
  CImgApertureMark mark;
  Set(mark, image, {2, 2, 1.0, 1.0, -1, -1});
  EXPECT_EQ(9, mark.GetNum());
  EXPECT_EQ(9.0 * expected, mark.GetSum()) << bitsPixel << ' ' << isSigned;
  EXPECT_EQ(0.0, mark.GetStd());
}

TEST(ApertureMark, ReadsEveryFormat) {
  ExpectSumOf<std::uint8_t>(8, 1, 200, 410.0);
  ExpectSumOf<std::uint8_t>(8, 0, 200, 410.0);
  ExpectSumOf<std::int16_t>(16, 1, -30000, -59990.0);
  ExpectSumOf<std::uint16_t>(16, 0, 60000, 120010.0);
  ExpectSumOf<std::int32_t>(32, 1, -2000000000, -3999999990.0);
  ExpectSumOf<std::uint32_t>(32, 0, 4000000000u, 8000000010.0);
  ExpectSumOf<float>(-32, 1, 1.25f, 12.0);
  ExpectSumOf<double>(-64, 1, -7.5, -5.0);
}

TEST(ApertureMark, AnUnknownFormatCountsAsZero) {
  COrbImage image = Ones(5, 5);
  image.SetBzero(10.0);
  image.SetBitsPixel(64);
  CImgApertureMark mark;
  Set(mark, image, {2, 2, 1.0, 1.0, -1, -1});
  EXPECT_EQ(9, mark.GetNum());
  EXPECT_EQ(0.0, mark.GetSum());
  EXPECT_EQ(0.0, mark.GetVar());
}

TEST(ApertureMark, LargeRadiiAreCappedAndTheRingKeepsItsThickness) {
  COrbImage image = Ones(3, 3);
  CImgApertureMark mark;
  Set(mark, image, {1, 1, 1000, 1000, 990, 990});
  OrbTestAccess::Outlines found = OrbTestAccess::OutlinesOf(mark);
  EXPECT_EQ(302.0, found.outerX);
  EXPECT_EQ(292.0, found.innerX);
  EXPECT_EQ(302.0, found.outerY);
  EXPECT_EQ(292.0, found.innerY);
  EXPECT_EQ(302, found.outerRow[0]);
  EXPECT_EQ(292, found.innerRow[0]);
  Set(mark, image, {1, 1, 302, 302, 5, 6});
  found = OrbTestAccess::OutlinesOf(mark);
  EXPECT_EQ(5.0, found.innerX);
  EXPECT_EQ(6.0, found.innerY);
  Set(mark, image, {1, 1, 400, 10, 300, 5});  // each axis by itself
  found = OrbTestAccess::OutlinesOf(mark);
  EXPECT_EQ(202.0, found.innerX);
  EXPECT_EQ(10.0, found.outerY);
  EXPECT_EQ(5.0, found.innerY);
}

TEST(ApertureMark, BothCapsLookAtTheInnerRadiusX) {
  COrbImage image = Ones(3, 3);
  CImgApertureMark mark;
  // Without a hole in x the y hole stays as it came.
  Set(mark, image, {1, 1, 400, 500, -1.0, 450});
  OrbTestAccess::Outlines found = OrbTestAccess::OutlinesOf(mark);
  EXPECT_EQ(302.0, found.outerX);
  EXPECT_EQ(-1.0, found.innerX);
  EXPECT_EQ(302.0, found.outerY);
  EXPECT_EQ(450.0, found.innerY);
  // With one in x, a y without a hole is moved like one.
  Set(mark, image, {1, 1, 10, 500, 5.0, -1.0});
  found = OrbTestAccess::OutlinesOf(mark);
  EXPECT_EQ(302.0 - 501.0, found.innerY);
  // A hole that the cap in x closes is none in y.
  Set(mark, image, {1, 1, 1000, 1000, 10, 10});
  found = OrbTestAccess::OutlinesOf(mark);
  EXPECT_EQ(302.0 - 990.0, found.innerX);
  EXPECT_EQ(10.0, found.innerY);
  EXPECT_EQ(9, mark.GetNum());
}

TEST(ApertureMark, TheBoxRoundsWhereTheShapeTruncates) {
  COrbImage image = Ones(21, 21);
  CImgApertureMark mark;
  // The shape lies around (10, 10) and takes columns 8 to 12; the box around (11, 10) begins at column 9.
  Set(mark, image, {10.5, 10.0, 2.0, 2.0, -1, -1});
  EXPECT_EQ(1, mark.PtInRgn(8, 10));
  EXPECT_EQ(21 - 3, mark.GetNum());
  // A radius that rounds up makes the box larger, which the shape does not follow.
  Set(mark, image, {10.0, 10.0, 2.6, 2.6, -1, -1});
  EXPECT_EQ(21, mark.GetNum());
  // Both together.
  Set(mark, image, {10.5, 10.5, 2.6, 2.6, -1, -1});
  EXPECT_EQ(21, mark.GetNum());
}

TEST(ApertureMark, OnlyPixelsInTheImageCount) {
  COrbImage image = Ones(6, 4);
  CImgApertureMark mark;
  Set(mark, image, {0, 0, 2.0, 2.0, -1, -1});
  EXPECT_EQ(3 + 3 + 2, mark.GetNum());
  EXPECT_EQ(8.0, mark.GetSum());
  EXPECT_EQ(1, mark.PtInRgn(-2, 0));
  Set(mark, image, {5, 3, 300.0, 300.0, -1, -1});
  EXPECT_EQ(24, mark.GetNum());
  Set(mark, image, {40, 3, 5.0, 5.0, -1, -1});
  EXPECT_EQ(0, mark.GetNum());
  EXPECT_EQ(0.0, mark.GetSum());
}

TEST(ApertureMark, EqualsThePlainFormulaEverywhere) {
  Random random(21);
  std::uniform_real_distribution<double> place(-8.0, 48.0);
  std::uniform_real_distribution<double> radius(-0.9, 24.0);
  std::uniform_real_distribution<double> hole(-2.0, 26.0);
  for (int trial = 0; trial < 250; ++trial) {
    int const width = 1 + static_cast<int>(random() % 40);
    int const height = 1 + static_cast<int>(random() % 30);
    COrbImage image = RandomImage(random, width, height, trial % 2 == 0 ? 1 : 3);
    if (trial % 3 == 0) {
      image.SetBscale(0.37);
      image.SetBzero(-11.5);
    }
    Geometry g{place(random), place(random), radius(random), radius(random), hole(random), hole(random)};
    if (trial % 4 == 0) g.innerX = g.innerY = -1.0;
    if (trial % 5 == 0) g.outerY = g.outerX;
    if (trial % 7 == 0) {
      g.cx = std::floor(g.cx);
      g.cy = std::floor(g.cy);
    }
    if (trial % 31 == 0) g.outerX = 20.0 * g.outerX;
    ExpectTheReference(image, g);
    if (testing::Test::HasFatalFailure()) return;
  }
}

TEST(ApertureMark, LargeEllipsesEqualThePlainFormula) {
  Random random(22);
  COrbImage image = RandomImage(random, 40, 30, 1);
  for (Geometry const& g : {Geometry{20, 15, 1000, 1000, 990, 990}, Geometry{-200.7, 15, 302, 40, 100, 39},
                            Geometry{20, 250, 17, 280, 16, 230}, Geometry{20, 15, 301, 2, 299, 1},
                            Geometry{300, 300, 302, 302, 280.5, 290}, Geometry{20, 15, 9, 9, 30000, 2}}) {
    ExpectTheReference(image, g);
  }
}

TEST(ApertureMark, HoldsWithAnyNumbers) {
  Random random(23);
  COrbImage image = RandomImage(random, 7, 5, 1);
  double const numbers[] = {0.0, 3.0, -1.0, -2.5, 302.5, 1e10, -1e10, kInfinity, -kInfinity, kNan};
  for (int trial = 0; trial < 1000; ++trial) {
    auto const pick = [&] { return numbers[random() % 10]; };
    Geometry const g{pick(), pick(), pick(), pick(), pick(), pick()};
    CImgApertureMark mark;
    Set(mark, image, g);
    EXPECT_GE(mark.GetNum(), 0);
    EXPECT_LE(mark.GetNum(), 35);
    int inside = 0;
    for (int y = 0; y < 5; ++y) {
      for (int x = 0; x < 7; ++x) inside += mark.PtInRgn(x, y);
    }
    EXPECT_LE(mark.GetNum(), inside);
    mark.PtInRgn(INT_MIN, INT_MAX);
    mark.PtInRgn(INT_MAX, INT_MIN);
  }
  COrbImage empty;
  CImgApertureMark mark;
  Set(mark, empty, {0, 0, 5, 5, -1, -1});
  EXPECT_EQ(0, mark.GetNum());
}

TEST(ApertureMark, AFlatHoleLargerThanAnyApertureIsExact) {
  // Far beyond the aperture only the rows near the centre matter, whatever limit the hole is held at.
  COrbImage image = Ones(60, 60);
  for (double const flat : {0.0, 1.0, 4.0}) {
    CImgApertureMark huge;
    CImgApertureMark large;
    Set(huge, image, {30, 30, 20, 20, 2e9, flat});
    Set(large, image, {30, 30, 20, 20, 100000, flat});
    EXPECT_EQ(OrbTestAccess::OutlinesOf(large).innerColumn, OrbTestAccess::OutlinesOf(huge).innerColumn);
    EXPECT_EQ(large.GetNum(), huge.GetNum());
    EXPECT_GT(huge.GetNum(), 0);
  }
}

TEST(ApertureMark, NotANumberShows) {
  COrbImage image = Ones(5, 5);
  image.SetPixelGrayRaw(2, 2, std::numeric_limits<float>::quiet_NaN(), 0);
  CImgApertureMark mark;
  Set(mark, image, {2, 2, 1.0, 1.0, -1, -1});
  EXPECT_EQ(9, mark.GetNum());
  EXPECT_TRUE(std::isnan(mark.GetSum()));
  EXPECT_TRUE(std::isnan(mark.GetStd()));
  Set(mark, image, {2, 2, 1.0, 1.0, 0.0, 0.0});
  EXPECT_EQ(8.0, mark.GetSum());
}

TEST(ApertureMark, LaterSetsForgetEarlierOnes) {
  COrbImage image = Ones(30, 30);
  CImgApertureMark mark;
  Set(mark, image, {15, 15, 12, 9, 5, 4});
  Set(mark, image, {15, 15, 2, 2, -1, -1});
  EXPECT_EQ(21, mark.GetNum());
  EXPECT_EQ(0, mark.PtInRgn(18, 15));
  CImgApertureMark const copy(mark);
  EXPECT_EQ(21, CImgApertureMark(copy).GetNum());
}

TEST(ApertureMark, WorksOnAHostileStoreAndChangesNothing) {
  Random random(24);
  COrbImage image = RandomImage(random, 25, 18, 3);
  COrbImage const before(image);
  MakeHostile(image);
  ExpectTheReference(image, {12.3, 9.8, 7.7, 5.0, 3.0, 2.0});
  EXPECT_TRUE(SameBits(before, image));
  EXPECT_EQ(0, LocksLeft(image));
}

}  // namespace
}  // namespace orb::test
