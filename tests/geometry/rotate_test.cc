// CImgRotate: any angle, quarters, halves.
#include <cmath>
#include <limits>

#include <tests/geometry/moving_trials.h>
#include <tests/reference/moved_samples_reference.h>
#include <tests/support/scratch_settings.h>

namespace orb::test {
namespace {

double kFill[] = {-7.25, 1000.5, 3.0};

TEST(QuarterTurn, TwoByOne) {
  COrbImage src = ImageOf(2, 1, {1, 2});
  CImgRotate dst = CopyOf<CImgRotate>(src);
  ASSERT_EQ(1, dst.Do90(0, &src, 0));
  EXPECT_EQ(1, dst.GetWidth());
  EXPECT_EQ(2, dst.GetHeight());
  EXPECT_EQ((std::vector<float>{2, 1}), SamplesOf(dst));
  CImgRotate right = CopyOf<CImgRotate>(src);
  ASSERT_EQ(1, right.Do90(1, &src, 0));
  EXPECT_EQ((std::vector<float>{1, 2}), SamplesOf(right));
}

TEST(QuarterTurn, EqualsThePlainMove) {
  Random random(11);
  for (int direction : {0, 1, -3}) {
    auto const run = [=](CImgRotate& dst, COrbImage& src) { return dst.Do90(direction, &src, 0); };
    auto const expect = [=](COrbImage& dst, COrbImage& src) { return reference::Rotate90(dst, direction, src); };
    ExpectTheReference<CImgRotate>(random, run, expect);
    for (auto [width, height] : {std::pair{64, 64}, {65, 48}, {130, 31}, {15, 200}, {270, 17}}) {
      ExpectTheReferenceOn<CImgRotate>(random, width, height, 1, run, expect);
    }
  }
}

TEST(QuarterTurn, ThereAndBackAndFourTimesRound) {
  Random random(12);
  COrbImage const src = RandomImage(random, 37, 20, 3);
  auto const turn = [](COrbImage image, int direction) {
    CImgRotate turned = CopyOf<CImgRotate>(image);
    EXPECT_EQ(1, turned.Do90(direction, &image, 0));
    return COrbImage(turned);
  };
  EXPECT_TRUE(SameBits(src, turn(turn(src, 0), 1)));
  EXPECT_TRUE(SameBits(src, turn(turn(turn(turn(src, 0), 0), 0), 0)));
  COrbImage half(src);
  CImgRotate byHalf = CopyOf<CImgRotate>(src);
  byHalf.Do180(&half, 0);
  EXPECT_TRUE(SameBits(byHalf, turn(turn(src, 1), 1)));
}

TEST(QuarterTurn, TakesTheLevelsOfTheSource) {
  COrbImage src = ImageOf(2, 1, {1, 2, 3, 4, 5, 6}, 3);
  src.SetLevel(1, 5.0, 9.0);
  CImgRotate dst = CopyOf<CImgRotate>(src);
  dst.SetLevel(1, 0.0, 1.0);
  SetPoints(dst);
  ASSERT_EQ(1, dst.Do90(0, &src, 0));
  EXPECT_TRUE(SameLevels(src, dst));
  EXPECT_EQ(0, dst.GetStdPtNum());
  EXPECT_EQ(0, dst.IsValidStdCtr());
}

TEST(QuarterTurn, LackOfMemoryLeavesTheSamples) {
  Random random(13);
  COrbImage src = RandomImage(random, 40, 30, 1);
  CImgRotate dst;
  dst.CopyImage(ImageOf(2, 3, {1, 2, 3, 4, 5, 6}), nullptr, nullptr);
  dst.SetWidth(40);  // only the record: what is asked for does not fit what is there
  dst.SetHeight(30);
  ScratchSettings const settings(100, "/no/such/folder");
  EXPECT_EQ(0, dst.Do90(0, &src, 0));
  dst.SetWidth(2);
  dst.SetHeight(3);
  EXPECT_EQ((std::vector<float>{1, 2, 3, 4, 5, 6}), SamplesOf(dst));
}

TEST(QuarterTurn, Reports) {
  ExpectProgress<CImgRotate>("回転処理中...", 15, 15, 3,
                             [](CImgRotate& dst, COrbImage& src, int progress) { dst.Do90(0, &src, progress); });
}

TEST(HalfTurn, EqualsThePlainMove) {
  Random random(14);
  ExpectTheReference<CImgRotate>(
      random,
      [](CImgRotate& dst, COrbImage& src) {
        dst.Do180(&src, 0);
        return 1;
      },
      [](COrbImage& dst, COrbImage& src) {
        reference::Rotate180(dst, src);
        return 1;
      });
}

TEST(HalfTurn, KeepsItsOwnLevels) {
  COrbImage src = ImageOf(2, 1, {1, 2});
  CImgRotate dst = CopyOf<CImgRotate>(src);
  dst.SetLevel(0, 5.0, 9.0);
  dst.Do180(&src, 0);
  EXPECT_EQ((std::vector<float>{2, 1}), SamplesOf(dst));
  EXPECT_EQ(5.0, dst.GetLevelMin(0));
}

TEST(HalfTurn, Reports) {
  ExpectProgress<CImgRotate>("回転処理中...", 4, 4, 1,
                             [](CImgRotate& dst, COrbImage& src, int progress) { dst.Do180(&src, progress); });
}

TEST(Rotate, EqualsThePlainFormula) {
  Random random(15);
  for (int resize : {0, 1}) {
    for (double angle : {30.0, -37.2, 90.0, 180.0, -270.0, 360.0, 1e-9, 45.0, 1e5}) {
      auto const run = [=](CImgRotate& dst, COrbImage& src) { return dst.Do(angle, kFill, &src, resize, 0); };
      auto const expect = [=](COrbImage& dst, COrbImage& src) {
        return reference::Rotate(dst, angle, kFill, src, resize);
      };
      SCOPED_TRACE(angle);
      for (int width : {2, 3, 7, 40}) {
        ExpectTheReferenceOn<CImgRotate>(random, width, 2, 1, run, expect);
        ExpectTheReferenceOn<CImgRotate>(random, width, 5, 3, run, expect);
        ExpectTheReferenceOn<CImgRotate>(random, width, 12, 1, run, expect);
      }
    }
  }
}

// A side of one pixel has no cell to read in: that pixel stands for it, as in the single-sample form.
TEST(Rotate, ASideOfOnePixelIsThatPixel) {
  Random random(21);
  double const s = std::sin(30.0 * 0.017453292519943295);
  double const c = std::cos(30.0 * 0.017453292519943295);
  for (auto [width, height] : {std::pair{1, 1}, {1, 6}, {40, 1}}) {
    ExpectTheReferenceOn<CImgRotate>(
        random, width, height, 3, [](CImgRotate& dst, COrbImage& src) { return dst.Do(30.0, kFill, &src, 0, 0); },
        [=](COrbImage& dst, COrbImage& src) {
          dst.InitStdPt();
          dst.SetDefaultCenter();
          COrbImage turned(src);
          turned.SetDefaultCenter();
          for (int p = 0; p < 3; ++p) {
            for (int y = 0; y < dst.GetHeight(); ++y) {
              for (int x = 0; x < dst.GetWidth(); ++x) {
                float const v =
                    turned.GetPixelGrayRaw(x, y, 0.0, 0.0, s, c, 1.0, p, kFill[p], 0, nullptr, nullptr, nullptr);
                dst.SetPixelGrayRaw(x, y, v, p);
              }
            }
          }
          return 1;
        });
  }
}

// An angle whose cosine is exactly 1.0 and whose sine is not 0.0, and one that is lost altogether.
TEST(Rotate, ByNextToNothing) {
  Random random(16);
  for (double angle : {1e-8, -1e-8, 1e-320}) {
    for (int resize : {0, 1}) {
      ExpectTheReferenceOn<CImgRotate>(
          random, 33, 9, 1, [=](CImgRotate& dst, COrbImage& src) { return dst.Do(angle, kFill, &src, resize, 0); },
          [=](COrbImage& dst, COrbImage& src) { return reference::Rotate(dst, angle, kFill, src, resize); });
    }
  }
}

TEST(Rotate, TurnsClockwise) {
  COrbImage src = ImageOf(3, 3, {0, 1, 0, 0, 0, 0, 0, 0, 0});
  CImgRotate dst = CopyOf<CImgRotate>(src);
  ASSERT_EQ(1, dst.Do(90.0, kFill, &src, 0, 0));
  EXPECT_EQ(1.0f, dst.GetPixelGrayRaw(2, 1, 0));
  EXPECT_EQ(0.0f, dst.GetPixelGrayRaw(0, 1, 0));
}

TEST(Rotate, ByZeroDoesNothingAtAll) {
  Random random(17);
  COrbImage src = RandomImage(random, 9, 8, 1);
  for (double angle : {0.0, -0.0}) {
    for (int resize : {0, 1}) {
      RecordingWindow window;
      CImgRotate dst = CopyOf<CImgRotate>(src);
      FillJunk(dst);
      SetPoints(dst);
      COrbImage before(dst);
      dst.SetProgressHandle(&window);
      EXPECT_EQ(1, dst.Do(angle, nullptr, &src, resize, 1));
      EXPECT_TRUE(SameBits(before, dst));
      EXPECT_TRUE(HasSamePoints(before, dst));
      EXPECT_TRUE(window.IsSilent());
    }
  }
}

TEST(Rotate, WithoutGrowingCutsCorners) {
  Random random(18);
  COrbImage src = RandomImage(random, 21, 21, 3);
  CImgRotate dst = CopyOf<CImgRotate>(src);
  ASSERT_EQ(1, dst.Do(45.0, kFill, &src, 0, 0));
  EXPECT_EQ(21, dst.GetWidth());
  EXPECT_EQ(21, dst.GetHeight());
  for (int p = 0; p < 3; ++p) {
    for (int x : {0, 20}) {
      for (int y : {0, 20}) EXPECT_EQ(static_cast<float>(kFill[p]), dst.GetPixelGrayRaw(x, y, p));
    }
    EXPECT_EQ(src.GetPixelGrayRaw(10, 10, p), dst.GetPixelGrayRaw(10, 10, p));
  }
}

// ceil of (-50 - 50) and (49 + 49), and of (-49 - 50) and (50 + 49), times the sine of 45 degrees.
TEST(Rotate, GrowsByTheTurnedCorners) {
  CSize const turned = FindTurnedSize(100, 100, 45.0);
  EXPECT_EQ(70 + 70 + 1, turned.cx);
  EXPECT_EQ(70 + 71 + 1, turned.cy);
  COrbImage src(-32, 100, 100, 1, 1.0, 0.0, 1, nullptr, nullptr);
  CImgRotate dst = CopyOf<CImgRotate>(src);
  ASSERT_EQ(1, dst.Do(45.0, kFill, &src, 1, 0));
  EXPECT_EQ(141, dst.GetWidth());
  EXPECT_EQ(142, dst.GetHeight());
}

// The sine of half a turn is not quite 0, and is rounded up.
TEST(Rotate, MayGrowByARowThatIsNotNeeded) {
  EXPECT_EQ(10, FindTurnedSize(10, 6, 180.0).cx);
  EXPECT_EQ(7, FindTurnedSize(10, 6, 180.0).cy);
  EXPECT_EQ(7, FindTurnedSize(10, 6, 90.0).cx);
  EXPECT_EQ(10, FindTurnedSize(10, 6, 90.0).cy);
}

TEST(Rotate, TheCentreIsThatBeforeGrowing) {
  COrbImage src(-32, 21, 11, 1, 1.0, 0.0, 1, nullptr, nullptr);
  CImgRotate dst = CopyOf<CImgRotate>(src);
  SetPoints(dst);
  ASSERT_EQ(1, dst.Do(30.0, kFill, &src, 1, 0));
  EXPECT_EQ(0, dst.GetStdPtNum());
  EXPECT_TRUE(IsSamePoint(CfPoint(10, 5), dst.GetStdCtr()));
}

TEST(Rotate, PutsTheCentreOfTheSourceBack) {
  COrbImage src(-32, 21, 11, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (CfPoint const& centre : {CfPoint(-1, -1), CfPoint(2.5, 3.25)}) {
    src.SetStdCtr(centre);
    CImgRotate dst = CopyOf<CImgRotate>(src);
    ASSERT_EQ(1, dst.Do(30.0, kFill, &src, 0, 0));
    EXPECT_TRUE(IsSamePoint(centre, src.GetStdCtr()));
  }
}

TEST(Rotate, LackOfMemoryLeavesTheCentreSet) {
  Random random(19);
  COrbImage src = RandomImage(random, 41, 30, 1);
  RecordingWindow window;
  CImgRotate dst = CopyOf<CImgRotate>(src);
  SetPoints(dst);
  dst.SetProgressHandle(&window);
  ScratchSettings const settings(100, "/no/such/folder");
  EXPECT_EQ(0, dst.Do(30.0, kFill, &src, 1, 1));
  EXPECT_TRUE(SameBits(src, dst));
  EXPECT_EQ(0, dst.GetStdPtNum());
  EXPECT_TRUE(IsSamePoint(CfPoint(20, 15), dst.GetStdCtr()));
  EXPECT_TRUE(window.IsSilent());
}

TEST(Rotate, AnAngleThatIsNoNumberFindsNothing) {
  Random random(20);
  COrbImage src = RandomImage(random, 9, 8, 1);
  for (double angle : {std::nan(""), std::numeric_limits<double>::infinity()}) {
    for (int resize : {0, 1}) {
      CImgRotate dst = CopyOf<CImgRotate>(src);
      EXPECT_EQ(1, dst.Do(angle, kFill, &src, resize, 0));
      for (float const v : SamplesOf(dst)) EXPECT_EQ(-7.25f, v);
    }
  }
}

TEST(Rotate, Reports) {
  int const grown = 3 * FindTurnedSize(5, 4, 30.0).cy;
  ExpectProgress<CImgRotate>("回転処理中...", grown, grown, 3, [](CImgRotate& dst, COrbImage& src, int progress) {
    dst.Do(30.0, kFill, &src, 1, progress);
  });
  ExpectProgress<CImgRotate>("回転処理中...", 4, 4, 1, [](CImgRotate& dst, COrbImage& src, int progress) {
    dst.Do(30.0, kFill, &src, 0, progress);
  });
}

}  // namespace
}  // namespace orb::test
