// CImgFilterMisc::ContourFilter: lines of equal brightness.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/filter_misc_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

CImgFilterMisc JunkLike(COrbImage const& src, Random& random) {
  CImgFilterMisc dst;
  dst.Create(src, nullptr, nullptr);
  SetRandomLevels(dst, random);
  FillJunk(dst);
  return dst;
}

// A few wide steps of brightness with noise on top, so that neighbours often share a step.
COrbImage Terraces(Random& random, int width, int height, int planes) {
  COrbImage image = RandomImage(random, width, height, planes);
  for (int p = 0; p < planes; ++p) {
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        double const slope = 40.0 * ((x + 2 * y) / 5) + image.GetPixelGrayRaw(x, y, p) / 8.0;
        image.SetPixelGrayRaw(x, y, static_cast<float>(slope), p);
      }
    }
  }
  return image;
}

TEST(Contour, EqualsThePlainGridEverywhere) {
  Random random(1);
  int n = 0;
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 3, 9, 17, 40}) {
      for (int height : {1, 2, 7, 12}) {
        COrbImage src = Terraces(random, width, height, planes);
        if (++n % 3 == 0) StrewSpecialSamples(src, random);
        for (RectCase& c : RectCases(width, height)) {
          CImgFilterMisc dst = JunkLike(src, random);
          COrbImage expected(dst);
          reference::ContourFilter(expected, n % 12 - 1, n % 2, src, c.Pointer());
          dst.ContourFilter(n % 12 - 1, n % 2, &src, c.Pointer(), 0);
          EXPECT_TRUE(SameBits(expected, dst)) << c.name << ' ' << width << 'x' << height << 'x' << planes;
          EXPECT_TRUE(SameLevels(expected, dst));
        }
      }
    }
  }
}

// Where the third grid point falls short of the sample changes from column to column and from row to row.
TEST(Contour, EqualsThePlainGridWhereverItsPointsFall) {
  Random random(2);
  COrbImage src = Terraces(random, 140, 140, 1);
  CImgFilterMisc dst = JunkLike(src, random);
  COrbImage expected(dst);
  reference::ContourFilter(expected, 9, 1, src, nullptr);
  dst.ContourFilter(9, 1, &src, nullptr, 0);
  EXPECT_TRUE(SameBits(expected, dst));
}

// One bright column at x, seen along row 0, where all grid rows are one: each grid step across the edge counts four
// tests in each of three rows of cells.
float AtBrightColumn(int x, int at) {
  COrbImage src(-32, x + 2, 1, 1, 1.0, 0.0, 1, nullptr, nullptr);
  src.SetPixelGrayRaw(x, 0, 255.0f, 0);
  CImgFilterMisc dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.ContourFilter(2, 0, &src, nullptr, 0);
  return dst.GetPixelGrayRaw(at, 0, 0);
}

TEST(Contour, IntendedTheThirdPointFallsShortOfManySamples) {
  COrbImage src(-32, 2, 140, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (int y = 0; y < 140; y += 2) src.SetPixelGrayRaw(1, y, 255.0f, 0);
  CImgFilterMisc dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.ContourFilter(2, 0, &src, nullptr, 0);
  for (int y = 2; y < 140; y += 2) {
    // Bright is (1, y) alone of the four pixels. The cell in the midst joins it to the left and to the upper left, the
    // cell on its column counts two diagonals, and the cell on its row, if there is one, all four tests.
    bool const isShort = (y >= 5 && y <= 8) || (y >= 65 && y <= 128);
    int const tests = 2 + 2 + (isShort ? 0 : 4);
    EXPECT_EQ(255.0f * static_cast<float>(tests) * 0.11111111f, dst.GetPixelGrayRaw(1, y, 0)) << y;
  }
}

TEST(Contour, AConstantImageGivesTheFloorInEveryPlane) {
  Random random(3);
  COrbImage src(-32, 6, 5, 3, 1.0, 0.0, 1, nullptr, nullptr);
  SetRandomLevels(src, random);
  SetSamples(src, std::vector<float>(90, 77.0f));
  CImgFilterMisc dst = JunkLike(src, random);
  dst.ContourFilter(8, 0, &src, nullptr, 0);
  for (int p = 0; p < 3; ++p) {
    for (int x = 0; x < 6; ++x) {
      EXPECT_EQ(static_cast<float>(dst.GetLevelMin(p)), dst.GetPixelGrayRaw(x, 2, p));
    }
  }
}

TEST(Contour, FewerThanTwoLevelsAreTwo) {
  Random random(4);
  COrbImage src = Terraces(random, 30, 20, 1);
  CImgFilterMisc two = JunkLike(src, random);
  CImgFilterMisc fewer(two);
  two.ContourFilter(2, 0, &src, nullptr, 0);
  for (int levels : {1, 0, -7}) {
    fewer.ContourFilter(levels, 0, &src, nullptr, 0);
    EXPECT_TRUE(SameBits(two, fewer)) << levels;
  }
}

TEST(Contour, FirstColumnAndRowReadNothingOutside) {
  // In the first column all grid columns read column 0: only rows can differ there.
  EXPECT_EQ(0.0f, AtBrightColumn(0, 0));
  // Across the edge at column 1: four tests in each of three cells, both at the bright column and behind it.
  EXPECT_EQ(255.0f * 12.0f * 0.11111111f, AtBrightColumn(1, 1));
  EXPECT_EQ(255.0f * 12.0f * 0.11111111f, AtBrightColumn(1, 2));
}

TEST(Contour, LinesMayLieAboveTheLevels) {
  COrbImage src(-32, 3, 3, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(src, {0, 255, 0, 255, 0, 255, 0, 255, 0});
  CImgFilterMisc dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.ContourFilter(2, 0, &src, nullptr, 0);
  EXPECT_LT(255.0f, dst.GetPixelGrayRaw(1, 1, 0));
  EXPECT_GE(4.0f * 255.0f, dst.GetPixelGrayRaw(1, 1, 0));
}

TEST(Contour, HeldStepsEndAtTheLevelsUnboundedOnesGoOn) {
  COrbImage src(-32, 2, 1, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (auto const& [low, high] : {std::pair(300.0f, 900.0f), std::pair(-900.0f, -300.0f)}) {
    SetSamples(src, {low, high});
    CImgFilterMisc dst;
    dst.CopyImage(src, nullptr, nullptr);
    dst.ContourFilter(4, 0, &src, nullptr, 0);
    EXPECT_EQ(0.0f, dst.GetPixelGrayRaw(1, 0, 0));
    dst.ContourFilter(4, 1, &src, nullptr, 0);
    EXPECT_LT(0.0f, dst.GetPixelGrayRaw(1, 0, 0));
  }
}

TEST(Contour, StepsTruncateTowardsZero) {
  COrbImage src(-32, 2, 1, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(src, {-30.0f, 30.0f});
  CImgFilterMisc dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.ContourFilter(4, 1, &src, nullptr, 0);
  EXPECT_EQ(0.0f, dst.GetPixelGrayRaw(1, 0, 0)) << "both within one step of 63.75 of 0";
}

TEST(Contour, ColourGoesByBrightness) {
  COrbImage src(-32, 2, 1, 3, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(src, {0, 200, 0, 0, 0, 0});  // 59.8 of brightness
  CImgFilterMisc dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.ContourFilter(4, 0, &src, nullptr, 0);
  EXPECT_EQ(0.0f, dst.GetPixelGrayRaw(1, 0, 0));
  dst.ContourFilter(5, 0, &src, nullptr, 0);
  for (int p = 0; p < 3; ++p) EXPECT_LT(0.0f, dst.GetPixelGrayRaw(1, 0, p)) << p;
}

TEST(Contour, AMonoSourceDrawsIntoAColourImage) {
  Random random(5);
  COrbImage src = Terraces(random, 20, 9, 1);
  CImgFilterMisc dst;
  dst.CopyImage(RandomImage(random, 20, 9, 3), nullptr, nullptr);
  COrbImage expected(dst);
  reference::ContourFilter(expected, 6, 0, src, nullptr);
  dst.ContourFilter(6, 0, &src, nullptr, 0);
  EXPECT_TRUE(SameBits(expected, dst));
}

TEST(Contour, ReportsRowsWhateverThePlanes) {
  Random random(6);
  RecordingWindow window;
  COrbImage src = Terraces(random, 5, 9, 3);
  CImgFilterMisc dst = JunkLike(src, random);
  dst.SetProgressHandle(&window);
  CRect rect(1, 2, 4, 8);
  dst.ContourFilter(4, 0, &src, &rect, 0);
  EXPECT_TRUE(window.IsSilent());
  dst.ContourFilter(4, 0, &src, &rect, 1);
  EXPECT_EQ(std::vector<std::string>{"等濃度曲線検出中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(6, OrbTestAccess::ProgressOf(dst).total);
  EXPECT_EQ(6, window.polls);
}

TEST(Contour, WorksOnAHostileStore) {
  Random random(7);
  COrbImage src = Terraces(random, 30, 14, 3);
  CImgFilterMisc dst = JunkLike(src, random);
  COrbImage expected(dst);
  reference::ContourFilter(expected, 7, 0, src, nullptr);
  MakeHostile(dst);
  MakeHostile(src);
  dst.ContourFilter(7, 0, &src, nullptr, 0);
  EXPECT_TRUE(SameBits(expected, dst));
  EXPECT_EQ(0, LocksLeft(dst));
  EXPECT_EQ(0, LocksLeft(src));
}

}  // namespace
}  // namespace orb::test
