// CImgFlat, radial and linear.
#include <cmath>
#include <limits>

#include <tests/reference/vignetting_flat_reference.h>
#include <tests/support/point_operator_test.h>

namespace orb::test {
namespace {

struct Radial {
  CPoint center;
  double falloff;
  double level;
};

struct Linear {
  CPoint from;
  CPoint to;
  double slope;
};

CImgFlat Correct(COrbImage& src, Radial const& r, CRect* rect = nullptr) {
  CImgFlat dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.Do(&src, r.center, r.falloff, r.level, rect, 0);
  return dst;
}

CImgFlat Correct(COrbImage& src, Linear const& l) {
  CImgFlat dst;
  dst.CopyImage(src, nullptr, nullptr);
  dst.Do(&src, l.from, l.to, l.slope, 0.0, nullptr, 0);
  return dst;
}

COrbImage Constant(int width, int height, float value) {
  COrbImage image(-32, width, height, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, std::vector<float>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), value));
  return image;
}

TEST(RadialFlat, EqualsThePlainFormulaEverywhere) {
  Random random(1);
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  for (Radial const& r : {Radial{{5, 2}, -0.0013, 1.0}, Radial{{-400, 77}, 2.5e-6, 0.75}, Radial{{3, 3}, -0.05, 1.0},
                          Radial{{20, 1}, 1.0, 0.0}, Radial{{1, 1}, kNan, 1.0}, Radial{{1, 1}, 0.1, -2.0}}) {
    ExpectTheReference<CImgFlat>(
        random, [&](CImgFlat& dst, COrbImage* src, CRect* rect) { dst.Do(src, r.center, r.falloff, r.level, rect, 0); },
        [&](COrbImage& dst, COrbImage* src, CRect* rect) {
          reference::RadialFlat(dst, *src, r.center, r.falloff, r.level, rect);
        });
  }
}

TEST(RadialFlat, WithoutFalloffCopies) {
  Random random(2);
  COrbImage src = RandomImage(random, 23, 9, 3);
  EXPECT_TRUE(SameBits(src, Correct(src, {{4, 4}, 0.0, 3.0})));
}

TEST(RadialFlat, LevelZeroLeavesABrightCentreAloneOnZeros) {
  COrbImage src = Constant(5, 5, 7.0f);
  CImgFlat const dst = Correct(src, {{2, 2}, 1.0, 0.0});
  std::vector<float> expected(25, 0.0f);
  expected[12] = 255.0f;
  EXPECT_TRUE(SameBits(expected, SamplesOf(dst)));
}

TEST(RadialFlat, IntendedFixedMarkWhereTheFieldEndsWhateverTheLevels) {
  COrbImage src = Constant(9, 1, 1000.0f);
  src.CImage::SetLevel(0, 500.0, 60000.0);
  // f = 1 - dx^2 / 4: nothing from two columns on, where it is exactly 0.
  CImgFlat const dst = Correct(src, {{4, 0}, -0.25, 1.0});
  float const third = static_cast<float>(1.0 / 0.75 * 1000.0);
  EXPECT_TRUE(SameBits(std::vector<float>{255.0f, 255.0f, 255.0f, third, 1000.0f, third, 255.0f, 255.0f, 255.0f},
                       SamplesOf(dst)));
  EXPECT_TRUE(SameLevels(src, dst));
}

TEST(RadialFlat, LevelIsTheUnitOfFalloff) {
  COrbImage src = Constant(1, 11, 80.0f);
  CImgFlat const dst = Correct(src, {{0, 0}, -0.5, 100.0});
  EXPECT_EQ(static_cast<float>(100.0 / (100.0 - 50.0) * 80.0), const_cast<CImgFlat&>(dst).GetPixelGrayRaw(0, 10, 0));
}

TEST(RadialFlat, UndoesTheVignettingItDescribes) {
  constexpr int kSide = 31;
  COrbImage src = Constant(kSide, kSide, 0.0f);
  for (int y = 0; y < kSide; ++y) {
    for (int x = 0; x < kSide; ++x) {
      int const r2 = (x - 15) * (x - 15) + (y - 15) * (y - 15);
      src.SetPixelGrayRaw(x, y, static_cast<float>(2000.0 * (1.0 - 0.3 * r2 / 450.0)), 0);
    }
  }
  for (float v : SamplesOf(Correct(src, {{15, 15}, -0.3 / 450.0, 1.0}))) EXPECT_NEAR(2000.0f, v, 2e-3);
}

TEST(RadialFlat, ToleratesCentresAtTheEndOfTheRange) {
  constexpr int kLeast = std::numeric_limits<int>::min();
  constexpr int kMost = std::numeric_limits<int>::max();
  COrbImage src = Constant(3, 2, 1.0f);
  for (CPoint center : {CPoint(kLeast, kMost), CPoint(kMost, kLeast), CPoint(kLeast, kLeast)}) {
    for (float v : SamplesOf(Correct(src, {center, 1.0, 1.0}))) EXPECT_GT(1e-18f, v);
  }
}

TEST(RadialFlat, ProgressCountsRowsOfEveryPlane) {
  ExpectRowsOfEveryPlane<CImgFlat>("周辺減光補正中...", [](CImgFlat& dst, COrbImage* src, CRect* rect, int progress) {
    dst.Do(src, CPoint(1, 1), -0.01, 1.0, rect, progress);
  });
}

TEST(LinearFlat, EqualsThePlainFormulaEverywhere) {
  Random random(3);
  for (Linear const& l : {Linear{{0, 0}, {30, 7}, 0.25}, Linear{{25, 3}, {-4, 40}, -1.5}, Linear{{2, 9}, {17, 9}, 3.0},
                          Linear{{1, 60000}, {2, 40000}, 0.1}, Linear{{1, -5}, {2, -4}, 1e30}}) {
    ExpectTheReference<CImgFlat>(
        random, [&](CImgFlat& dst, COrbImage* src, CRect* rect) { dst.Do(src, l.from, l.to, l.slope, 0.0, rect, 0); },
        [&](COrbImage& dst, COrbImage* src, CRect* rect) {
          reference::LinearFlat(dst, *src, l.from, l.to, l.slope, rect);
        });
  }
}

TEST(LinearFlat, WithoutSlopeCopies) {
  Random random(4);
  COrbImage src = RandomImage(random, 23, 9, 3);
  EXPECT_TRUE(SameBits(src, Correct(src, Linear{{3, 4}, {9, 1}, 0.0})));
}

TEST(LinearFlat, IntendedTheMiddleOfTheRowsPlacesARampAlongColumns) {
  COrbImage src = Constant(12, 2, 100.0f);
  // t = 0, c = 1, s = 0: nothing is taken off at x = m = 6, though the points end at x = 3.
  CImgFlat dst = Correct(src, Linear{{0, 6}, {3, 6}, 2.0});
  for (int y = 0; y < 2; ++y) {
    for (int x = 0; x < 12; ++x) EXPECT_EQ(static_cast<float>(100.0 - (x - 6) * 2.0), dst.GetPixelGrayRaw(x, y, 0));
  }
}

TEST(LinearFlat, PointsInReverseTurnTheRamp) {
  COrbImage src = Constant(4, 1, 0.0f);
  EXPECT_TRUE(
      SameBits(std::vector<float>{0.0f, -1.0f, -2.0f, -3.0f}, SamplesOf(Correct(src, Linear{{0, 0}, {3, 0}, 1.0}))));
  EXPECT_TRUE(
      SameBits(std::vector<float>{0.0f, 1.0f, 2.0f, 3.0f}, SamplesOf(Correct(src, Linear{{3, 0}, {0, 0}, 1.0}))));
}

TEST(LinearFlat, IntendedTheMiddleRowIsTruncatedAndHeldIn16Bits) {
  COrbImage src = Constant(1, 1, 0.0f);
  struct Case {
    int fromY;
    int toY;
    float middle;
  };
  // x * c + y * s is 0 at the first sample, so that what is left is m.
  for (Case const& c : {Case{3, 4, 3.0f}, Case{-3, -4, -3.0f}, Case{0, -1, 0.0f}, Case{65534, 0, 32767.0f},
                        Case{65536, 0, -32768.0f}, Case{65536, 65536, 0.0f}, Case{-65536, -65538, -1.0f},
                        Case{-65538, 0, 32767.0f}, Case{2147483647, 2147483647, -1.0f}}) {
    CImgFlat dst = Correct(src, Linear{{0, c.fromY}, {1, c.toY}, 1.0});
    EXPECT_EQ(c.middle, dst.GetPixelGrayRaw(0, 0, 0)) << c.fromY << ' ' << c.toY;
  }
}

TEST(LinearFlat, IntendedTheExtraNumberIsNotRead) {
  Random random(5);
  COrbImage src = RandomImage(random, 8, 8, 1);
  CImgFlat plain = Correct(src, Linear{{1, 2}, {6, 3}, 0.5});
  for (double extra : {1.0, -7e30, std::numeric_limits<double>::quiet_NaN()}) {
    CImgFlat dst;
    dst.CopyImage(src, nullptr, nullptr);
    dst.Do(&src, CPoint(1, 2), CPoint(6, 3), 0.5, extra, nullptr, 0);
    EXPECT_TRUE(SameBits(plain, dst));
  }
}

TEST(LinearFlat, PointsAboveEachOtherGiveNoNumbers) {
  COrbImage src = Constant(3, 3, 10.0f);
  for (CPoint to : {CPoint(2, 9), CPoint(2, -9), CPoint(2, 2)}) {
    for (float v : SamplesOf(Correct(src, Linear{{2, 2}, to, 1.0}))) EXPECT_TRUE(std::isnan(v));
  }
}

TEST(LinearFlat, ProgressCountsRowsOfEveryPlane) {
  ExpectRowsOfEveryPlane<CImgFlat>("周辺減光補正中...", [](CImgFlat& dst, COrbImage* src, CRect* rect, int progress) {
    dst.Do(src, CPoint(0, 0), CPoint(4, 4), 0.5, 0.0, rect, progress);
  });
}

}  // namespace
}  // namespace orb::test
