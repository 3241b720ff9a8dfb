// CImgInvert: the formula, and the calling contract on the simplest operator.
#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/invert_reference.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

TEST(Invert, WorkedExample) {
  COrbImage src(-32, 2, 1, 1, 1.0, 0.0, 1, nullptr, nullptr);
  src.SetLevel(0, 100.0, 500.0);
  SetSamples(src, {200.0f, 600.0f});
  CImgInvert dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.SetLevel(0, 0.0, 255.0);
  dst.Do(&src, nullptr, 0);
  EXPECT_EQ(191.25f, dst.GetPixelGrayRaw(0, 0, 0));
  EXPECT_EQ(-63.75f, dst.GetPixelGrayRaw(1, 0, 0));
}

TEST(Invert, EqualsThePlainFormulaEverywhere) {
  Random random(1);
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 7, 16, 33, 40, 256, 771}) {
      for (int height : {1, 3, 30}) {
        COrbImage src = RandomImage(random, width, height, planes);
        for (RectCase& c : RectCases(width, height)) {
          CImgInvert dst;
          dst.Create(src, nullptr, nullptr);
          SetRandomLevels(dst, random);
          FillJunk(dst);
          COrbImage expected(dst);
          reference::Invert(expected, src, c.Pointer());
          dst.Do(&src, c.Pointer(), 0);
          EXPECT_TRUE(SameBits(expected, dst)) << c.name << ' ' << width << 'x' << height << 'x' << planes;
          EXPECT_TRUE(SameLevels(expected, dst));
        }
      }
    }
  }
}

TEST(Invert, InPlaceEqualsCopy) {
  Random random(2);
  COrbImage src = RandomImage(random, 37, 11, 3);
  CImgInvert copy;
  copy.CopyImage(src, nullptr, nullptr);
  copy.Do(&src, nullptr, 0);
  CImgInvert inPlace;
  inPlace.CopyImage(src, nullptr, nullptr);
  inPlace.Do(&inPlace, nullptr, 0);
  EXPECT_TRUE(SameBits(copy, inPlace));
}

TEST(Invert, TwiceGivesEachSampleBackUpToRounding) {
  Random random(3);
  COrbImage src = RandomImage(random, 20, 20, 1);
  CImgInvert once;
  once.CopyImage(src, nullptr, nullptr);
  once.Do(&once, nullptr, 0);
  once.Do(&once, nullptr, 0);
  for (int y = 0; y < 20; ++y) {
    for (int x = 0; x < 20; ++x) EXPECT_NEAR(src.GetPixelGrayRaw(x, y, 0), once.GetPixelGrayRaw(x, y, 0), 1e-3);
  }
}

TEST(Invert, ProgressCountsRowsOfEveryPlane) {
  RecordingWindow window;
  COrbImage src(-32, 4, 6, 3, 1.0, 0.0, 1, nullptr, nullptr);
  CImgInvert dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.SetProgressHandle(&window);
  CRect rect(0, 1, 4, 5);
  dst.Do(&src, &rect, 1);
  EXPECT_EQ(std::vector<std::string>{"反転処理中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(12, OrbTestAccess::ProgressOf(dst).total);
  EXPECT_EQ(12u, window.positions.size());
  EXPECT_EQ(12, window.polls);
}

TEST(Invert, SilentWithoutProgress) {
  RecordingWindow window;
  CImgInvert dst;
  dst.CopyImage(COrbImage(-32, 4, 6, 1, 1.0, 0.0, 1, nullptr, nullptr), nullptr, nullptr);
  dst.SetProgressHandle(&window);
  dst.Do(&dst, nullptr, 0);
  EXPECT_TRUE(window.IsSilent());
}

TEST(Invert, EscapeChangesNothing) {
  Random random(4);
  RecordingWindow window;
  window.escapeAtPoll = 2;
  COrbImage src = RandomImage(random, 9, 9, 1);
  CImgInvert quiet;
  quiet.CopyImage(src, nullptr, nullptr);
  quiet.Do(&src, nullptr, 0);
  CImgInvert pressed;
  pressed.CopyImage(src, nullptr, nullptr);
  pressed.SetProgressHandle(&window);
  pressed.Do(&src, nullptr, 1);
  EXPECT_TRUE(SameBits(quiet, pressed));
  EXPECT_EQ(9, window.polls);
}

TEST(Invert, WorksOnAHostileStore) {
  Random random(5);
  COrbImage src = RandomImage(random, 12, 7, 3);
  CImgInvert expected;
  expected.CopyImage(src, nullptr, nullptr);
  expected.Do(&src, nullptr, 0);
  CImgInvert dst;
  dst.CopyImage(src, nullptr, nullptr);
  MakeHostile(dst);
  MakeHostile(src);
  dst.Do(&src, nullptr, 0);
  EXPECT_TRUE(SameBits(expected, dst));
  EXPECT_EQ(0, LocksLeft(dst));
  EXPECT_EQ(0, LocksLeft(src));
}

}  // namespace
}  // namespace orb::test
