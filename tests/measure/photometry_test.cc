// CImgPhotometry: a star's width, its net count, the spread of its core, and the fixed answer.
#include <climits>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/aperture_reference.h>
#include <tests/reference/star_profile_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

CImgPhotometry PhotometryOf(COrbImage const& image) {
  CImgPhotometry made;
  made.CopyImage(image, nullptr, nullptr);
  return made;
}

CImgPhotometry Flat(int width, int height, float level) {
  CImgPhotometry image = PhotometryOf(COrbImage(-32, width, height, 1, 1.0, 0.0, 1, nullptr, nullptr));
  SetSamples(image, std::vector<float>(static_cast<std::size_t>(image.GetPixelCount()), level));
  return image;
}

// A sky of 100 and 101 in turn, and one star of three samples a side: 1000, 500, 100. Half height of the base 101 is
// 550.5.
CImgPhotometry SmallStar() {
  CImgPhotometry image = Flat(61, 61, 0.0f);
  for (int y = 0; y < 61; ++y) {
    for (int x = 0; x < 61; ++x) image.SetPixelGrayRaw(x, y, (x + y) % 2 == 0 ? 100.0f : 101.0f, 0);
  }
  image.SetPixelGrayRaw(30, 30, 1000.0f, 0);
  for (CPoint const at : {CPoint(29, 30), CPoint(31, 30), CPoint(30, 29), CPoint(30, 31)}) {
    image.SetPixelGrayRaw(at.x, at.y, 500.0f, 0);
  }
  return image;
}

TEST(Photometry, WidthOfOneStar) {
  CImgPhotometry image = SmallStar();
  // 100 is the base: of 48 samples half are 100 and half 101, and index 24 is 101.
  double const edge = 1.0 - (550.5 - 500.0) / (1000.0 - 500.0);
  double const psf = std::sqrt(2.0 * edge) * 0.4246609;
  double const expected = psf * 2.354820045829508 * (psf * 2.354820045829508);
  EXPECT_NEAR(expected, image.GetFWHM(30, 30), 1e-12);
  EXPECT_NEAR(expected, image.GetFWHM(31, 29), 1e-12);
  EXPECT_EQ(0.0, image.GetFWHM(-1, 30));
}

TEST(Photometry, WorkedCount) {
  CImgPhotometry image = SmallStar();
  // The width is 1.798, so the disk has radius 4.096 and the ring goes from 5.793 to 7.793: circles of 4 and of 7 with
  // a hole of 5, each with half of its pixels 100 and half 101, up to one.
  reference::Aperture const disk(image, 30, 30, 4, 4, -1, -1);
  reference::Aperture const ring(image, 30, 30, 7, 7, 5, 5);
  double const net = disk.sum - ring.sum / ring.num * disk.num;
  EXPECT_EQ(static_cast<int>(net), image.MeasureCount(30, 30));
  // The star holds 900 and four times 400 or so.
  EXPECT_NEAR(900 + 4 * 399, image.MeasureCount(30, 30), 12);
}

TEST(Photometry, TheDiskIsCentredWhereTheCallerSays) {
  CImgPhotometry image = SmallStar();
  // The climb from here ends on the star, whose width gives the radii; the pixel in the left column of a disk around
  // the star is beyond this one.
  image.SetPixelGrayRaw(26, 30, 300.0f, 0);
  EXPECT_EQ(image.GetFWHM(30, 30), image.GetFWHM(31, 31));
  EXPECT_EQ(reference::MeasureCount(image, 31, 31, image.GetFWHM(30, 30)), image.MeasureCount(31, 31));
  EXPECT_NE(image.MeasureCount(30, 30), image.MeasureCount(31, 31));
}

TEST(Photometry, ARefusedStarCountsNothing) {
  CImgPhotometry image = Flat(40, 40, 50.0f);
  EXPECT_EQ(0.0, image.GetFWHM(20, 20));
  EXPECT_EQ(0, image.MeasureCount(20, 20));
  EXPECT_EQ(0, image.MeasureCount(-5, 20));
  EXPECT_EQ(0, image.MeasureCount(INT_MAX, INT_MIN));
  CImgPhotometry empty;
  EXPECT_EQ(0, empty.MeasureCount(0, 0));
}

TEST(Photometry, CountsAreHeldAtTheRangeOfInt) {
  CImgPhotometry image = SmallStar();
  for (int y = 0; y < 61; ++y) {
    for (int x = 0; x < 61; ++x) image.SetPixelGrayRaw(x, y, image.GetPixelGrayRaw(x, y, 0) * 1e7f, 0);
  }
  EXPECT_EQ(INT_MAX, image.MeasureCount(30, 30));
}

TEST(Photometry, ARingOfNotANumberGivesNoCount) {
  CImgPhotometry image = SmallStar();
  image.SetPixelGrayRaw(30 + 5, 30 + 3, std::numeric_limits<float>::quiet_NaN(), 0);
  EXPECT_EQ(0, image.MeasureCount(30, 30));
}

TEST(Photometry, EqualsThePlainFormulaEverywhere) {
  Random random(31);
  std::normal_distribution<float> noise(100.0f, 3.0f);
  int counted = 0;
  for (int trial = 0; trial < 80; ++trial) {
    int const width = 1 + static_cast<int>(random() % 70);
    int const height = 1 + static_cast<int>(random() % 70);
    CImgPhotometry image = PhotometryOf(RandomImage(random, width, height, trial % 2 == 0 ? 1 : 3));
    std::vector<float> samples(static_cast<std::size_t>(image.GetPixelCount()));
    for (float& v : samples) v = noise(random);
    SetSamples(image, samples);
    for (int p = 0; p < image.GetPlanes(); ++p) {
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
          double const square = std::pow(x - width / 2.0, 2) + std::pow(y - height / 2.0, 2);
          double const light = 4000.0 * std::exp(-square / (2.0 + trial % 9));
          image.SetPixelGrayRaw(x, y, static_cast<float>(image.GetPixelGrayRaw(x, y, p) + light), p);
        }
      }
    }
    if (trial % 6 == 0) StrewSpecialSamples(image, random, 60);
    for (int n = 0; n < 10; ++n) {
      int const x = static_cast<int>(random() % static_cast<unsigned>(width));
      int const y = static_cast<int>(random() % static_cast<unsigned>(height));
      double psf = 0.0;
      int const isStar = reference::MeasureStar(image, CPoint(x, y), psf);
      double const f = isStar == 0 || psf <= 1e-6 ? 0.0 : psf * 2.354820045829508 * (psf * 2.354820045829508);
      ASSERT_EQ(f, image.GetFWHM(x, y));
      if (trial % 6 == 0) {
        image.MeasureCount(x, y);  // with infinities there is no number to compare
        continue;
      }
      ASSERT_EQ(reference::MeasureCount(image, x, y, f), image.MeasureCount(x, y)) << trial << ' ' << x << ' ' << y;
      counted += f > 0.0 ? 1 : 0;
    }
  }
  EXPECT_GT(counted, 200);
}

TEST(Photometry, ExtentIsTheBlockOverItsMiddle) {
  CImgPhotometry image = Flat(5, 5, 10.0f);
  image.SetPixelGrayRaw(2, 2, 110.0f, 0);
  EXPECT_EQ(1.0, image.MeasureExtent(2, 2, 10.0));
  image.SetPixelGrayRaw(1, 1, 60.0f, 0);
  image.SetPixelGrayRaw(3, 2, 35.0f, 0);
  EXPECT_EQ(1.75, image.MeasureExtent(2, 2, 10.0));
  EXPECT_EQ((1.75 * 100.0 + 90.0) / 110.0, image.MeasureExtent(2, 2, 0.0));
}

TEST(Photometry, ExtentReadsPlaneZeroAlone) {
  CImgPhotometry image = PhotometryOf(COrbImage(-32, 3, 3, 3, 1.0, 0.0, 1, nullptr, nullptr));
  FillJunk(image);
  for (int i = 0; i < 9; ++i) image.SetPixelGrayRaw(i % 3, i / 3, 2.0f, 0);
  EXPECT_EQ(9.0, image.MeasureExtent(1, 1, 0.0));
}

TEST(Photometry, ExtentOnTheBorderIsZero) {
  CImgPhotometry image = Flat(6, 5, 10.0f);
  for (int y = -1; y <= 5; ++y) {
    for (int x = -1; x <= 6; ++x) {
      bool const isInside = x >= 1 && x <= 4 && y >= 1 && y <= 3;
      EXPECT_EQ(isInside ? 9.0 : 0.0, image.MeasureExtent(x, y, 0.0)) << x << ',' << y;
    }
  }
  EXPECT_EQ(0.0, image.MeasureExtent(INT_MAX, 2, 0.0));
  EXPECT_EQ(0.0, image.MeasureExtent(2, INT_MIN, 0.0));
  CImgPhotometry small = Flat(2, 9, 10.0f);
  EXPECT_EQ(0.0, small.MeasureExtent(1, 4, 0.0));
}

TEST(Photometry, ExtentEqualsThePlainFormula) {
  Random random(32);
  CImgPhotometry image = PhotometryOf(RandomImage(random, 17, 13, 3));
  for (int y = -1; y < 14; ++y) {
    for (int x = -1; x < 18; ++x) {
      EXPECT_EQ(reference::MeasureExtent(image, x, y, 12.75), image.MeasureExtent(x, y, 12.75)) << x << ',' << y;
    }
  }
}

TEST(Photometry, CondensationIsAlwaysNine) {
  CImgPhotometry image;
  EXPECT_EQ(9, image.MeasureCondensation(0, 0, 0));
  EXPECT_EQ(9, image.MeasureCondensation(-5, INT_MAX, 17));
}

TEST(Photometry, ChangesNothingAndIsSilent) {
  CImgPhotometry image = SmallStar();
  COrbImage const before(image);
  RecordingWindow window;
  image.SetProgressHandle(&window);
  image.GetFWHM(30, 30);
  image.MeasureCount(30, 30);
  image.MeasureExtent(30, 30, 100.0);
  EXPECT_TRUE(SameBits(before, image));
  EXPECT_TRUE(SameLevels(before, image));
  EXPECT_TRUE(window.IsSilent());
}

TEST(Photometry, WorksOnAHostileStore) {
  CImgPhotometry image = SmallStar();
  CImgPhotometry hostile(image);
  MakeHostile(hostile);
  EXPECT_EQ(image.GetFWHM(30, 30), hostile.GetFWHM(30, 30));
  EXPECT_EQ(image.MeasureCount(30, 30), hostile.MeasureCount(30, 30));
  EXPECT_EQ(image.MeasureExtent(30, 30, 100.0), hostile.MeasureExtent(30, 30, 100.0));
  EXPECT_EQ(0, LocksLeft(hostile));
}

TEST(Photometry, CopiesAreWholeImages) {
  CImgPhotometry const image = SmallStar();
  CImgPhotometry const copy(image);
  CImgPhotometry assigned;
  assigned = image;
  EXPECT_TRUE(SameBits(image, copy));
  EXPECT_TRUE(SameBits(image, assigned));
}

}  // namespace
}  // namespace orb::test
