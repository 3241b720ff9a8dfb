// CImgSoftBinning: sums of blocks.
#include <climits>

#include <tests/geometry/moving_trials.h>
#include <tests/reference/moved_samples_reference.h>
#include <tests/support/scratch_settings.h>

namespace orb::test {
namespace {

TEST(SoftBinning, EqualsThePlainSums) {
  Random random(31);
  for (int keepPartial : {0, 1}) {
    for (int scaleLevels : {0, 1}) {
      for (auto [binX, binY] : {std::pair{1, 1}, {2, 2}, {3, 1}, {4, 3}, {1, 4}, {5, 2}, {7, 7}, {50, 50}}) {
        SCOPED_TRACE(std::to_string(binX) + " by " + std::to_string(binY));
        auto const run = [=, x = binX, y = binY](CImgSoftBinning& dst, COrbImage& src) {
          return dst.Do(x, y, keepPartial, scaleLevels, &src, 0);
        };
        auto const expect = [=, x = binX, y = binY](COrbImage& dst, COrbImage& src) {
          return reference::SoftBinning(dst, x, y, keepPartial, scaleLevels, src);
        };
        ExpectTheReference<CImgSoftBinning>(random, run, expect);
        ExpectTheReferenceOn<CImgSoftBinning>(random, 531, 4, 1, run, expect);
      }
    }
  }
}

COrbImage Constant(int width, int height, float value) {
  return ImageOf(width, height, std::vector<float>(static_cast<std::size_t>(width * height), value));
}

TEST(SoftBinning, WholeBlocksOnly) {
  COrbImage src = Constant(10, 10, 1.0f);
  src.SetPixelGrayRaw(9, 4, 1000.0f, 0);
  src.SetPixelGrayRaw(4, 9, 1000.0f, 0);
  CImgSoftBinning dst = CopyOf<CImgSoftBinning>(src);
  ASSERT_EQ(1, dst.Do(3, 3, 0, 0, &src, 0));
  EXPECT_EQ(3, dst.GetWidth());
  EXPECT_EQ(3, dst.GetHeight());
  EXPECT_EQ(std::vector<float>(9, 9.0f), SamplesOf(dst));
}

TEST(SoftBinning, PartialBlocksAreDimmer) {
  COrbImage src = Constant(10, 10, 1.0f);
  CImgSoftBinning dst = CopyOf<CImgSoftBinning>(src);
  ASSERT_EQ(1, dst.Do(3, 3, 1, 0, &src, 0));
  EXPECT_EQ((std::vector<float>{9, 9, 9, 3, 9, 9, 9, 3, 9, 9, 9, 3, 3, 3, 3, 1}), SamplesOf(dst));
}

TEST(SoftBinning, ByOneIsACopy) {
  Random random(32);
  COrbImage src = RandomImage(random, 13, 7, 3);
  CImgSoftBinning dst = CopyOf<CImgSoftBinning>(src);
  FillJunk(dst);
  ASSERT_EQ(1, dst.Do(1, 1, 0, 1, &src, 0));
  EXPECT_TRUE(SameBits(src, dst));
  EXPECT_TRUE(SameLevels(src, dst));
}

TEST(SoftBinning, LevelsFollowOnRequest) {
  COrbImage src = Constant(4, 4, 30.0f);
  src.SetLevel(0, 10.0, 70.0);
  CImgSoftBinning plain = CopyOf<CImgSoftBinning>(src);
  ASSERT_EQ(1, plain.Do(2, 2, 0, 0, &src, 0));
  EXPECT_EQ(std::vector<float>(4, 120.0f), SamplesOf(plain));
  EXPECT_TRUE(SameLevels(src, plain));
  CImgSoftBinning scaled = CopyOf<CImgSoftBinning>(src);
  ASSERT_EQ(1, scaled.Do(2, 2, 0, 1, &src, 0));
  EXPECT_EQ(40.0, scaled.GetLevelMin(0));
  EXPECT_EQ(280.0, scaled.GetLevelMax(0));
  EXPECT_EQ(src.GetPixelGray256(0, 0, 0), scaled.GetPixelGray256(0, 0, 0));
}

// The levels are the destination's own.
TEST(SoftBinning, DoesNotReadTheLevelsOfTheSource) {
  COrbImage src = Constant(4, 4, 30.0f);
  CImgSoftBinning dst = CopyOf<CImgSoftBinning>(src);
  dst.SetLevel(0, 1.0, 2.0);
  ASSERT_EQ(1, dst.Do(2, 1, 0, 1, &src, 0));
  EXPECT_EQ(2.0, dst.GetLevelMin(0));
  EXPECT_EQ(4.0, dst.GetLevelMax(0));
}

// A double would come to 2^24 + 2 here.
TEST(SoftBinning, TheSumIsAFloatAfterEachTerm) {
  COrbImage src = ImageOf(3, 1, {16777216.0f, 1.0f, 1.0f});
  CImgSoftBinning dst = CopyOf<CImgSoftBinning>(src);
  ASSERT_EQ(1, dst.Do(3, 1, 0, 0, &src, 0));
  EXPECT_EQ(16777216.0f, dst.GetPixelGrayRaw(0, 0, 0));
}

// Row by row: the two ones of the upper row come together before the lower one does.
TEST(SoftBinning, TheOrderIsRowByRow) {
  COrbImage src = ImageOf(2, 2, {1.0f, 1.0f, 16777216.0f, 0.0f});
  CImgSoftBinning dst = CopyOf<CImgSoftBinning>(src);
  ASSERT_EQ(1, dst.Do(2, 2, 0, 0, &src, 0));
  EXPECT_EQ(16777218.0f, dst.GetPixelGrayRaw(0, 0, 0));
}

TEST(SoftBinning, MayLeaveNothing) {
  COrbImage src = Constant(2, 2, 1.0f);
  CImgSoftBinning dst = CopyOf<CImgSoftBinning>(src);
  EXPECT_EQ(1, dst.Do(3, 1, 0, 0, &src, 0));
  EXPECT_EQ(0, dst.GetWidth());
  EXPECT_EQ(2, dst.GetHeight());
  CImgSoftBinning partial = CopyOf<CImgSoftBinning>(src);
  EXPECT_EQ(1, partial.Do(INT_MAX, INT_MAX, 1, 0, &src, 0));
  EXPECT_EQ(std::vector<float>{4.0f}, SamplesOf(partial));
}

TEST(SoftBinning, RefusesBinsThatAreNone) {
  COrbImage src = Constant(2, 2, 1.0f);
  COrbImage empty(-32, 0, 2, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (auto [binX, binY] : {std::pair{0, 1}, {1, 0}, {-1, 2}, {2, INT_MIN}}) {
    for (int keepPartial : {0, 1}) {
      RecordingWindow window;
      CImgSoftBinning dst = CopyOf<CImgSoftBinning>(src);
      SetPoints(dst);
      dst.SetProgressHandle(&window);
      EXPECT_EQ(0, dst.Do(binX, binY, keepPartial, 1, &src, 1));
      EXPECT_TRUE(SameBits(src, dst));
      EXPECT_TRUE(SameLevels(src, dst));
      EXPECT_EQ(0, dst.GetStdPtNum());
      EXPECT_TRUE(window.IsSilent());
      CImgSoftBinning ofNothing = CopyOf<CImgSoftBinning>(empty);
      EXPECT_EQ(0, ofNothing.Do(binX, binY, keepPartial, 0, &src, 0));
    }
  }
}

TEST(SoftBinning, LackOfMemoryLeavesTheSamples) {
  Random random(33);
  COrbImage src = RandomImage(random, 40, 30, 1);
  CImgSoftBinning dst = CopyOf<CImgSoftBinning>(src);
  ScratchSettings const settings(100, "/no/such/folder");
  EXPECT_EQ(0, dst.Do(2, 2, 0, 1, &src, 0));
  EXPECT_TRUE(SameBits(src, dst));
  EXPECT_TRUE(SameLevels(src, dst));
}

TEST(SoftBinning, Reports) {
  ExpectProgress<CImgSoftBinning>(
      "ソフトビニング処理中...", 6, 6, 3,
      [](CImgSoftBinning& dst, COrbImage& src, int progress) { dst.Do(2, 2, 0, 0, &src, progress); });
  ExpectProgress<CImgSoftBinning>(
      "ソフトビニング処理中...", 2, 2, 1,
      [](CImgSoftBinning& dst, COrbImage& src, int progress) { dst.Do(3, 3, 1, 0, &src, progress); });
}

}  // namespace
}  // namespace orb::test
