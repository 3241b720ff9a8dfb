// Between mono and colour, and the row shift.
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/planes_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

TEST(ToColor, GivesThreePlanesTheLevelsOfPlaneZero) {
  Random random(1);
  COrbImage image = RandomImage(random, 5, 4, 1);
  image.SetLevel(0, 12.5, 99.0);
  image.SetStdPt(0, CfPoint(2, 3));
  EXPECT_EQ(1, image.ToColor());
  EXPECT_EQ(3, image.GetPlanes());
  EXPECT_EQ(3, image.GetDimension());
  for (int p = 0; p < 3; ++p) {
    EXPECT_EQ(12.5, image.GetLevelMin(p));
    EXPECT_EQ(99.0, image.GetLevelMax(p));
  }
  EXPECT_EQ(2, image.GetStdPt(0).x);
}

TEST(ToColor, OfColorChangesNothingAndSaysNothing) {
  Random random(2);
  RecordingWindow window;
  COrbImage image = RandomImage(random, 5, 4, 3);
  COrbImage const before(image);
  COrbImage other = RandomImage(random, 5, 4, 3);
  image.SetProgressHandle(&window);
  EXPECT_EQ(1, image.ToColor());
  EXPECT_EQ(1, image.ToColor(&other, 1));
  EXPECT_TRUE(SameBits(before, image));
  EXPECT_TRUE(SameLevels(before, image));
  EXPECT_TRUE(window.IsSilent());
}

TEST(ToColor, CopiesRawAndKeepsItsOwnLevels) {
  Random random(3);
  for (int srcPlanes : {1, 3}) {
    for (int width : {1, 2, 7, 33}) {
      for (int height : {1, 3, 12}) {
        COrbImage src = RandomImage(random, width, height, srcPlanes);
        COrbImage image = RandomImage(random, width, height, 1);
        double const min = image.GetLevelMin(0);
        double const max = image.GetLevelMax(0);
        COrbImage expected(image);
        expected.ChangePlanes(3, nullptr, nullptr);
        reference::FillColor(expected, src);
        EXPECT_EQ(1, image.ToColor(&src, 0));
        EXPECT_TRUE(SameBits(expected, image)) << width << 'x' << height << 'x' << srcPlanes;
        for (int p = 0; p < 3; ++p) {
          EXPECT_EQ(min, image.GetLevelMin(p));
          EXPECT_EQ(max, image.GetLevelMax(p));
        }
      }
    }
  }
}

TEST(ToColor, FromItselfRepeatsItsPlane) {
  Random random(4);
  COrbImage image = RandomImage(random, 5, 4, 1);
  COrbImage expected(image);
  expected.ChangePlanes(3, nullptr, nullptr);
  COrbImage src(image);
  reference::FillColor(expected, src);
  EXPECT_EQ(1, image.ToColor(&image, 0));
  EXPECT_TRUE(SameBits(expected, image));
}

TEST(ToColor, ProgressCountsRows) {
  RecordingWindow window;
  COrbImage src(-32, 4, 6, 3, 1.0, 0.0, 1, nullptr, nullptr);
  COrbImage image(-32, 4, 6, 1, 1.0, 0.0, 1, nullptr, nullptr);
  image.SetProgressHandle(&window);
  image.ToColor(&src, 1);
  EXPECT_EQ(std::vector<std::string>{"カラーモード変換処理中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(6, OrbTestAccess::ProgressOf(image).total);
  EXPECT_EQ(6, window.polls);
}

TEST(ToGray, GivesOnePlaneTheLevelsOfPlaneZero) {
  Random random(5);
  COrbImage image = RandomImage(random, 5, 4, 3);
  image.CImage::SetLevel(0, 12.5, 99.0);
  EXPECT_EQ(1, image.ToGray());
  EXPECT_EQ(1, image.GetPlanes());
  EXPECT_EQ(2, image.GetDimension());
  EXPECT_EQ(12.5, image.GetLevelMin(0));
  EXPECT_EQ(99.0, image.GetLevelMax(0));
}

TEST(ToGray, OfMonoChangesNothingAndSaysNothing) {
  Random random(6);
  RecordingWindow window;
  COrbImage image = RandomImage(random, 5, 4, 1);
  COrbImage const before(image);
  COrbImage other = RandomImage(random, 5, 4, 3);
  image.SetProgressHandle(&window);
  EXPECT_EQ(1, image.ToGray());
  EXPECT_EQ(1, image.ToGray(&other, 1));
  EXPECT_TRUE(SameBits(before, image));
  EXPECT_TRUE(SameLevels(before, image));
  EXPECT_TRUE(window.IsSilent());
}

TEST(ToGray, WorkedExample) {
  // Every plane at half of its own levels; plane 0 of the destination sees that at 1500.
  COrbImage src(-32, 1, 1, 3, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(src, {150.0f, 20.0f, 3000.0f});
  src.CImage::SetLevel(0, 100.0, 200.0);
  src.CImage::SetLevel(1, 0.0, 40.0);
  src.CImage::SetLevel(2, 2000.0, 4000.0);
  COrbImage gray(src);
  gray.CImage::SetLevel(0, 1000.0, 2000.0);
  EXPECT_EQ(1, gray.ToGray(&src, 0));
  EXPECT_FLOAT_EQ(1500.0f, gray.GetPixelGrayRaw(0, 0, 0));
}

TEST(ToGray, SumsFromGreenOverBlueToRed) {
  // Green and red nearly cancel, so that it shows which of the sums rounds the blue away.
  COrbImage color(-32, 1, 1, 3, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(color, {-1, 1, 1});
  color.CImage::SetLevel(0, 0.0, 1e-14 * 0.299 / 0.587);
  color.CImage::SetLevel(1, 0.0, 1e-14);
  color.CImage::SetLevel(2, 0.0, 29.07);
  double const r = -1 / color.GetLevelRange(0) * 255.0 * 0.299;
  double const g = 1 / color.GetLevelRange(1) * 255.0 * 0.587;
  double const b = 1 / color.GetLevelRange(2) * 255.0 * 0.114;
  ASSERT_NE(g + b + r, r + g + b);
  COrbImage gray(color);
  ASSERT_EQ(1, gray.ToGray(&color, 0));
  double const raw = color.GetLevelRange(0) * (g + b + r) * 0.00392156862745098;
  EXPECT_EQ(static_cast<float>(raw), gray.GetPixelGrayRaw(0, 0, 0));
}

TEST(ToGray, EqualsThePlainFormulaEverywhere) {
  Random random(7);
  for (int width : {1, 2, 7, 16, 33, 40}) {
    for (int height : {1, 3, 12}) {
      COrbImage src = RandomImage(random, width, height, 3);
      COrbImage image = RandomImage(random, width, height, 3);
      COrbImage expected(image);
      expected.ChangePlanes(1, nullptr, nullptr);
      expected.CImage::SetLevel(0, image.GetLevelMin(0), image.GetLevelMax(0));
      reference::FillGray(expected, src);
      EXPECT_EQ(1, image.ToGray(&src, 0));
      EXPECT_TRUE(SameBits(expected, image)) << width << 'x' << height;
      EXPECT_TRUE(SameLevels(expected, image));
    }
  }
}

TEST(ToGray, ProgressCountsRows) {
  RecordingWindow window;
  COrbImage src(-32, 4, 6, 3, 1.0, 0.0, 1, nullptr, nullptr);
  COrbImage image(src);
  image.SetProgressHandle(&window);
  image.ToGray(&src, 1);
  EXPECT_EQ(std::vector<std::string>{"モノクロモード変換処理中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(6, OrbTestAccess::ProgressOf(image).total);
  EXPECT_EQ(6, window.polls);
}

TEST(ChangingPlanes, WorksOnAHostileSource) {
  Random random(8);
  COrbImage src = RandomImage(random, 12, 7, 3);
  COrbImage gray(src);
  gray.ToGray(&src, 0);
  COrbImage color = RandomImage(random, 12, 7, 1);
  COrbImage colorAgain(color);
  color.ToColor(&src, 0);
  MakeHostile(src);
  COrbImage grayAgain(src);
  grayAgain.ToGray(&src, 0);
  colorAgain.ToColor(&src, 0);
  EXPECT_TRUE(SameBits(gray, grayAgain));
  EXPECT_TRUE(SameBits(color, colorAgain));
  EXPECT_EQ(0, LocksLeft(src));
}

TEST(LiftUp, ByNothingChangesNothing) {
  Random random(9);
  COrbImage image = RandomImage(random, 5, 4, 3);
  COrbImage const before(image);
  image.LiftUp(0);
  EXPECT_TRUE(SameBits(before, image));
}

TEST(LiftUp, ByOneRepeatsTheLastRow) {
  COrbImage image(-32, 2, 3, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, {1, 2, 3, 4, 5, 6});
  image.LiftUp(1);
  EXPECT_EQ((std::vector<float>{3, 4, 5, 6, 5, 6}), SamplesOf(image));
}

TEST(LiftUp, EqualsThePlainCopyAndStaysInside) {
  Random random(10);
  for (int height : {1, 2, 5, 12}) {
    for (int rows : {1, 2, 4, 12, 13, std::numeric_limits<int>::max()}) {
      COrbImage image = RandomImage(random, 7, height, 3);
      COrbImage expected(image);
      reference::LiftUp(expected, rows);
      image.LiftUp(rows);
      EXPECT_TRUE(SameBits(expected, image)) << height << " rows up by " << rows;
    }
  }
}

TEST(LiftUp, DownwardDropsWhatWouldLeaveTheImage) {
  COrbImage image(-32, 1, 4, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, {1, 2, 3, 4});
  image.LiftUp(-3);
  EXPECT_EQ((std::vector<float>{1, 2, 3, 1}), SamplesOf(image));
  image.LiftUp(std::numeric_limits<int>::min());
  EXPECT_EQ((std::vector<float>{1, 2, 3, 1}), SamplesOf(image));
}

TEST(LiftUp, WorksOnAHostileStore) {
  Random random(11);
  COrbImage image = RandomImage(random, 12, 7, 3);
  COrbImage expected(image);
  expected.LiftUp(2);
  MakeHostile(image);
  image.LiftUp(2);
  EXPECT_TRUE(SameBits(expected, image));
  EXPECT_EQ(0, LocksLeft(image));
}

}  // namespace
}  // namespace orb::test
