// CImgFlip, CImgScroll and CImgCrop: whole rows on the move.
#include <climits>

#include <tests/geometry/moving_trials.h>
#include <tests/reference/moved_samples_reference.h>
#include <tests/support/scratch_settings.h>

namespace orb::test {
namespace {

TEST(Flip, ThreeByTwo) {
  COrbImage src = ImageOf(3, 2, {1, 2, 3, 4, 5, 6});
  CImgFlip dst = CopyOf<CImgFlip>(src);
  dst.Do(0, &src, 0);
  EXPECT_EQ((std::vector<float>{4, 5, 6, 1, 2, 3}), SamplesOf(dst));
  dst.Do(1, &src, 0);
  EXPECT_EQ((std::vector<float>{3, 2, 1, 6, 5, 4}), SamplesOf(dst));
}

TEST(Flip, EqualsThePlainMove) {
  Random random(1);
  for (int mode : {0, 1, 2, -1}) {
    ExpectTheReference<CImgFlip>(
        random,
        [=](CImgFlip& dst, COrbImage& src) {
          dst.Do(mode, &src, 0);
          return 1;
        },
        [=](COrbImage& dst, COrbImage& src) {
          reference::Flip(dst, mode, src);
          return 1;
        });
  }
}

TEST(Flip, AnyOtherModeOnlyStartsAndEnds) {
  Random random(2);
  COrbImage src = RandomImage(random, 6, 5, 3);
  for (int mode : {2, -1, INT_MAX}) {
    RecordingWindow window;
    CImgFlip dst = CopyOf<CImgFlip>(src);
    FillJunk(dst);
    COrbImage const before(dst);
    dst.SetProgressHandle(&window);
    dst.Do(mode, &src, 1);
    EXPECT_TRUE(SameBits(before, dst));
    EXPECT_EQ(std::vector<std::string>{"左右反転処理中..."}, window.starts);
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
    EXPECT_EQ(0, window.polls);
  }
}

TEST(Flip, KeepsStandardPoints) {
  COrbImage src = ImageOf(2, 1, {1, 2});
  CImgFlip dst = CopyOf<CImgFlip>(src);
  SetPoints(dst);
  COrbImage before(dst);
  for (int mode : {0, 1}) dst.Do(mode, &src, 0);
  EXPECT_EQ(2, dst.GetStdPtNum());
  EXPECT_TRUE(HasSamePoints(before, dst));
}

TEST(Flip, Reports) {
  ExpectProgress<CImgFlip>("上下反転処理中...", 12, 12, 3,
                           [](CImgFlip& dst, COrbImage& src, int progress) { dst.Do(0, &src, progress); });
  ExpectProgress<CImgFlip>("左右反転処理中...", 4, 4, 1,
                           [](CImgFlip& dst, COrbImage& src, int progress) { dst.Do(1, &src, progress); });
}

TEST(Scroll, UpOnOneAxisRightOnTheOther) {
  COrbImage src = ImageOf(3, 2, {1, 2, 3, 4, 5, 6});
  CImgScroll dst = CopyOf<CImgScroll>(src);
  dst.Do(1, 1, &src, 0);
  EXPECT_EQ((std::vector<float>{3, 1, 2, 6, 4, 5}), SamplesOf(dst));
  dst.Do(-1, 1, &src, 0);
  EXPECT_EQ((std::vector<float>{2, 3, 1, 5, 6, 4}), SamplesOf(dst));
  COrbImage column = ImageOf(1, 3, {1, 2, 3});
  CImgScroll up = CopyOf<CImgScroll>(column);
  up.Do(1, 0, &column, 0);
  EXPECT_EQ((std::vector<float>{2, 3, 1}), SamplesOf(up));
  up.Do(-1, 0, &column, 0);
  EXPECT_EQ((std::vector<float>{3, 1, 2}), SamplesOf(up));
}

TEST(Scroll, EqualsThePlainMove) {
  Random random(3);
  for (int axis : {0, 1, -5}) {
    for (int amount : {0, 1, -1, 5, 39, -40, 1000003, INT_MAX, INT_MIN + 40}) {
      auto const run = [=](CImgScroll& dst, COrbImage& src) {
        dst.Do(amount, axis, &src, 0);
        return 1;
      };
      auto const expect = [=](COrbImage& dst, COrbImage& src) {
        reference::Scroll(dst, amount, axis, src);
        return 1;
      };
      for (int width : {1, 2, 7, 40}) {
        ExpectTheReferenceOn<CImgScroll>(random, width, 40, 1, run, expect);
        ExpectTheReferenceOn<CImgScroll>(random, width, 3, 3, run, expect);
      }
    }
  }
}

TEST(Scroll, ByAWholeSideIsACopy) {
  Random random(4);
  COrbImage src = RandomImage(random, 7, 5, 3);
  CImgScroll dst = CopyOf<CImgScroll>(src);
  for (auto [amount, axis] : {std::pair{7, 1}, {-14, 1}, {5, 0}, {-5, 0}, {0, 0}}) {
    FillJunk(dst);
    dst.Do(amount, axis, &src, 0);
    EXPECT_TRUE(SameBits(src, dst)) << amount << ' ' << axis;
  }
}

TEST(Scroll, TheLowestAmountIsOneToo) {
  COrbImage src = ImageOf(3, 1, {1, 2, 3});
  CImgScroll dst = CopyOf<CImgScroll>(src);
  dst.Do(INT_MIN, 1, &src, 0);  // a remainder of -2: two to the left
  EXPECT_EQ((std::vector<float>{3, 1, 2}), SamplesOf(dst));
}

TEST(Scroll, AnEmptyImageStaysEmpty) {
  COrbImage src(-32, 0, 0, 1, 1.0, 0.0, 1, nullptr, nullptr);
  CImgScroll dst = CopyOf<CImgScroll>(src);
  for (int axis : {0, 1}) dst.Do(3, axis, &src, 0);
  EXPECT_EQ(0, dst.GetPixelCount());
}

TEST(Scroll, Reports) {
  for (int axis : {0, 1}) {
    ExpectProgress<CImgScroll>("スクロール処理中...", 12, 12, 3, [axis](CImgScroll& dst, COrbImage& src, int progress) {
      dst.Do(2, axis, &src, progress);
    });
  }
}

TEST(Crop, ThreeByTwo) {
  COrbImage src = ImageOf(3, 2, {1, 2, 3, 4, 5, 6});
  CImgCrop dst = CopyOf<CImgCrop>(src);
  ASSERT_EQ(1, dst.Do(CRect(1, 0, 3, 2), &src, 0));
  EXPECT_EQ(2, dst.GetWidth());
  EXPECT_EQ((std::vector<float>{2, 3, 5, 6}), SamplesOf(dst));
}

TEST(Crop, EqualsThePlainMove) {
  Random random(5);
  for (int planes : {1, 3}) {
    for (int width : {1, 2, 13, 40}) {
      for (int height : {1, 2, 12}) {
        for (CRect const rect :
             {CRect(0, 0, width, height), CRect(width / 2, height / 2, width, height),
              CRect(0, height / 3, width - width / 3, height), CRect(width / 4, 0, width / 4, height)}) {
          ExpectTheReferenceOn<CImgCrop>(
              random, width, height, planes, [&](CImgCrop& dst, COrbImage& src) { return dst.Do(rect, &src, 0); },
              [&](COrbImage& dst, COrbImage& src) { return reference::Crop(dst, rect, src); });
        }
      }
    }
  }
}

TEST(Crop, ToNothingSucceeds) {
  COrbImage src = ImageOf(3, 2, {1, 2, 3, 4, 5, 6});
  RecordingWindow window;
  CImgCrop dst = CopyOf<CImgCrop>(src);
  dst.SetLevel(0, 3.0, 9.0);
  dst.SetProgressHandle(&window);
  EXPECT_EQ(1, dst.Do(CRect(), &src, 1));
  EXPECT_EQ(0, dst.GetWidth());
  EXPECT_EQ(0, dst.GetHeight());
  EXPECT_EQ(9.0, dst.GetLevelMax(0));
  EXPECT_EQ(1u, window.starts.size());
  EXPECT_EQ(1u, window.ends.size());
  EXPECT_EQ(0, window.polls);
}

TEST(Crop, WhatLiesBeyondTheSourceIsZero) {
  COrbImage src = ImageOf(2, 2, {1, 2, 3, 4});
  CImgCrop dst = CopyOf<CImgCrop>(src);
  ASSERT_EQ(1, dst.Do(CRect(-1, 1, 3, 3), &src, 0));
  EXPECT_EQ((std::vector<float>{0, 3, 4, 0, 0, 0, 0, 0}), SamplesOf(dst));
  ASSERT_EQ(1, dst.Do(CRect(INT_MAX - 2, INT_MIN, INT_MAX, INT_MIN + 1), &src, 0));
  EXPECT_EQ((std::vector<float>{0, 0}), SamplesOf(dst));
}

TEST(Crop, RefusesWhatIsNoSize) {
  COrbImage src = ImageOf(2, 2, {1, 2, 3, 4});
  for (CRect const rect : {CRect(1, 0, 0, 2), CRect(0, 2, 2, 1), CRect(INT_MAX, 0, INT_MIN, 2),
                           CRect(INT_MIN, INT_MIN, INT_MAX, INT_MAX)}) {
    RecordingWindow window;
    CImgCrop dst = CopyOf<CImgCrop>(src);
    SetPoints(dst);
    dst.SetProgressHandle(&window);
    EXPECT_EQ(0, dst.Do(rect, &src, 1));
    EXPECT_TRUE(SameBits(src, dst));
    EXPECT_EQ(0, dst.GetStdPtNum());
    EXPECT_TRUE(window.IsSilent());
  }
}

TEST(Crop, LackOfMemoryLeavesTheSamples) {
  Random random(6);
  COrbImage src = RandomImage(random, 40, 30, 1);
  CImgCrop dst = CopyOf<CImgCrop>(src);
  ScratchSettings const settings(100, "/no/such/folder");
  EXPECT_EQ(0, dst.Do(CRect(1, 1, 20, 20), &src, 0));
  EXPECT_TRUE(SameBits(src, dst));
}

TEST(Crop, AnnouncesTwiceItsRows) {
  ExpectProgress<CImgCrop>("切り抜き処理中...", 18, 9, 3, [](CImgCrop& dst, COrbImage& src, int progress) {
    dst.Do(CRect(1, 1, 4, 4), &src, progress);
  });
}

TEST(Crop, ItsBarEndsHalfWay) {
  Random random(8);
  COrbImage src = RandomImage(random, 3, 100, 1);
  RecordingWindow window;
  CImgCrop dst = CopyOf<CImgCrop>(src);
  dst.SetProgressHandle(&window);
  dst.Do(CRect(0, 0, 3, 100), &src, 1);
  EXPECT_EQ(48, window.positions.back());
}

}  // namespace
}  // namespace orb::test
