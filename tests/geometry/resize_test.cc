// CImgResize: the nine places of a picture on its canvas, the fill, and its run.
#include <climits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/resize_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

float const kNoFill[3] = {0.0f, 0.0f, 0.0f};

struct Canvas : CImgResize {
  explicit Canvas(COrbImage const& src) { CopyImage(src, nullptr, nullptr); }
  int Resize(int newWidth, int newHeight, int anchor, float const* fill, COrbImage& src, int progress = 0) {
    return Do(newWidth, newHeight, anchor, const_cast<float*>(fill), &src, progress);
  }
};

// A row of 1, 2, 3 ...; levels 0 to 255.
COrbImage CountingRow(int width) {
  COrbImage row(-32, width, 1, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (int x = 0; x < width; ++x) row.SetPixelGrayRaw(x, 0, static_cast<float>(x + 1), 0);
  return row;
}

std::vector<float> RowAfter(int oldWidth, int newWidth, int anchor) {
  COrbImage src = CountingRow(oldWidth);
  Canvas canvas(src);
  EXPECT_EQ(1, canvas.Resize(newWidth, 1, anchor, kNoFill, src));
  return SamplesOf(canvas);
}

TEST(Resize, SmallerCutsTheTwoSidesAlikeOrKeepsACorner) {
  COrbImage src(-32, 6, 4, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 6; ++x) src.SetPixelGrayRaw(x, y, static_cast<float>(10 * y + x), 0);
  }
  Canvas middle(src);
  middle.Resize(2, 2, 4, kNoFill, src);
  EXPECT_EQ((std::vector<float>{12, 13, 22, 23}), SamplesOf(middle));
  Canvas topLeft(src);
  topLeft.Resize(2, 2, 0, kNoFill, src);
  EXPECT_EQ((std::vector<float>{0, 1, 10, 11}), SamplesOf(topLeft));
  Canvas bottomRight(src);
  bottomRight.Resize(2, 2, 8, kNoFill, src);
  EXPECT_EQ((std::vector<float>{24, 25, 34, 35}), SamplesOf(bottomRight));
}

TEST(Resize, LargerPutsThePictureInTheCorner) {
  COrbImage src = CountingRow(2);
  Canvas canvas(src);
  float const fill[] = {51.0f};
  canvas.Resize(4, 3, 8, fill, src);
  EXPECT_EQ((std::vector<float>{51, 51, 51, 51, 51, 51, 51, 51, 51, 51, 1, 2}), SamplesOf(canvas));
}

TEST(Resize, HalfOfAnOddDifferenceIsTruncated) {
  EXPECT_EQ((std::vector<float>{0, 1, 2, 0, 0}), RowAfter(2, 5, 1));
  EXPECT_EQ((std::vector<float>{2, 3}), RowAfter(5, 2, 1));
  EXPECT_EQ((std::vector<float>{4, 5}), RowAfter(5, 2, 2));
}

TEST(Resize, AnyOtherAnchorIsTheTopLeft) {
  for (int const anchor : {-1, -8, 9, 13, INT_MAX, INT_MIN}) EXPECT_EQ(RowAfter(3, 5, 0), RowAfter(3, 5, anchor));
}

// Each direction by itself: wider and lower at once.
TEST(Resize, GrowsAndShrinksAtOnce) {
  COrbImage src(-32, 1, 3, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(src, {1, 2, 3});
  Canvas canvas(src);
  canvas.Resize(3, 1, 7, kNoFill, src);
  EXPECT_EQ((std::vector<float>{0, 3, 0}), SamplesOf(canvas));
}

// Intended: plane 0's levels for the fill of every plane.
TEST(Resize, FillGoesThroughTheLevelsOfPlane0) {
  COrbImage src(-32, 1, 1, 3, 1.0, 0.0, 1, nullptr, nullptr);
  src.CImage::SetLevel(0, 100.0, 355.0);
  src.CImage::SetLevel(1, -7.0, 1.0);
  src.CImage::SetLevel(2, 5000.0, 9000.0);
  Canvas canvas(src);
  float const red[] = {255.0f, 0.0f, 0.0f};
  canvas.Resize(2, 1, 0, red, src);
  EXPECT_EQ((std::vector<float>{0, 355, 0, 100, 0, 100}), SamplesOf(canvas));
}

TEST(Resize, EqualsThePlainFormula) {
  Random random(71);
  for (int const planes : {1, 3}) {
    for (int i = 0; i < 150; ++i) {
      auto const pick = [&](int most) { return 1 + static_cast<int>(random() % static_cast<unsigned>(most)); };
      COrbImage src = RandomImage(random, pick(40), pick(12), planes);
      StrewSpecialSamples(src, random);
      Canvas canvas(src);
      SetRandomLevels(canvas, random);
      FillJunk(canvas);
      float const fill[] = {12.5f, -3.0f, 400.0f};
      int const newWidth = pick(50);
      int const newHeight = pick(20);
      int const anchor = static_cast<int>(random() % 11) - 1;
      COrbImage expected(canvas);
      expected.ChangeSize(newWidth, newHeight, nullptr, nullptr);
      FillJunk(expected);
      reference::Resize(expected, anchor, fill, src);
      ASSERT_EQ(1, canvas.Resize(newWidth, newHeight, anchor, fill, src));
      ASSERT_EQ(newWidth, canvas.GetWidth());
      ASSERT_EQ(newHeight, canvas.GetHeight());
      ASSERT_TRUE(SameBits(expected, canvas)) << i << " anchor " << anchor;
      ASSERT_TRUE(SameLevels(expected, canvas));
    }
  }
}

TEST(Resize, ClearsPointsAndCentre) {
  COrbImage src = CountingRow(4);
  src.SetStdPt(0, CfPoint(1, 0));
  src.SetStdCtr(2, 0);
  Canvas canvas(src);
  ASSERT_NE(0, canvas.GetStdPtNum());
  canvas.Resize(4, 1, 0, kNoFill, src);
  EXPECT_EQ(0, canvas.GetStdPtNum());
  EXPECT_EQ(0, canvas.IsValidStdCtr());
  EXPECT_EQ(1, src.GetStdPtNum());
}

TEST(Resize, WithoutMemoryTheImageStays) {
  RecordingWindow window;
  COrbImage src = CountingRow(4);
  src.SetStdPt(0, CfPoint(1, 0));
  Canvas canvas(src);
  canvas.SetProgressHandle(&window);
  EXPECT_EQ(0, canvas.Resize(INT_MAX, INT_MAX, 0, kNoFill, src, 1));
  EXPECT_EQ(0, canvas.Resize(-1, 5, 0, kNoFill, src, 1));
  EXPECT_TRUE(SameBits(src, canvas));
  EXPECT_EQ(4, canvas.GetWidth());
  EXPECT_EQ(0, canvas.GetStdPtNum());  // cleared before the size is tried
  EXPECT_TRUE(window.IsSilent());
}

TEST(Resize, ToNothing) {
  COrbImage src = CountingRow(4);
  for (int anchor = 0; anchor < 9; ++anchor) {
    Canvas canvas(src);
    EXPECT_EQ(1, canvas.Resize(0, 0, anchor, kNoFill, src));
    EXPECT_EQ(0, canvas.GetPixelCount());
  }
}

TEST(Resize, ProgressCountsFilledAndCopiedRows) {
  Random random(72);
  RecordingWindow window;
  COrbImage src = RandomImage(random, 3, 4, 3);
  Canvas canvas(src);
  canvas.SetProgressHandle(&window);
  canvas.Resize(5, 6, 8, kNoFill, src, 1);
  EXPECT_EQ(std::vector<std::string>{"サイズ変更処理中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(30, OrbTestAccess::ProgressOf(canvas).total);
  EXPECT_EQ(30, window.polls);
  EXPECT_EQ(100, window.positions.back());
  window = RecordingWindow();
  canvas.Resize(9, 2, 4, kNoFill, src, 1);
  EXPECT_EQ(12, OrbTestAccess::ProgressOf(canvas).total);
  EXPECT_EQ(12, window.polls);
  window = RecordingWindow();
  canvas.Resize(9, 2, 4, kNoFill, src);
  EXPECT_TRUE(window.IsSilent());
}

TEST(Resize, WorksOnAHostileStore) {
  Random random(73);
  COrbImage src = RandomImage(random, 9, 7, 3);
  Canvas expected(src);
  Canvas canvas(src);
  float const fill[] = {1.0f, 2.0f, 3.0f};
  expected.Resize(12, 5, 4, fill, src);
  MakeHostile(canvas);
  MakeHostile(src);
  canvas.Resize(12, 5, 4, fill, src);
  EXPECT_TRUE(SameBits(expected, canvas));
  EXPECT_EQ(0, LocksLeft(src));
}

TEST(Resize, IsAnOperatorThatCopies) {
  Random random(74);
  Canvas const a(RandomImage(random, 5, 4, 3));
  CImgResize const b(a);
  CImgResize c;
  c = b;
  EXPECT_TRUE(SameBits(a, b));
  EXPECT_TRUE(SameBits(a, c));
}

}  // namespace
}  // namespace orb::test
