// CImgSkyFlat: which tiles count as sky, what fills the holes, what is painted and blurred.
#include <limits>

#include <gtest/gtest.h>
#include <tests/reference/sky_tiles_reference.h>
#include <tests/sky/sky_image.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>

namespace orb::test {
namespace {

CImgSkyFlat Model(COrbImage& src, int size) {
  CImgSkyFlat model;
  model.CopyImage(src, nullptr, nullptr);
  FillJunk(model);
  model.Do(size, &src, 0);
  return model;
}

// Tiles of 32 pixels, each a chessboard of two values one apart, so that the median is the upper one and the deviation
// a half; a star where the table has a hole.
constexpr int kTile = 32;
constexpr double kHole = -1.0;

COrbImage Tiles(std::vector<std::vector<double>> const& medians) {
  int const rows = static_cast<int>(medians.size());
  int const columns = static_cast<int>(medians[0].size());
  COrbImage image(-32, columns * kTile, rows * kTile, 1, 1.0, 0.0, 1, nullptr, nullptr);
  for (int y = 0; y < rows * kTile; ++y) {
    for (int x = 0; x < columns * kTile; ++x) {
      double const median = medians[static_cast<std::size_t>(y / kTile)][static_cast<std::size_t>(x / kTile)];
      double v = median - (x + y) % 2;
      if (median == kHole) v = (x + y) % 3 == 0 ? 9000.0 : 50.0;
      image.SetPixelGrayRaw(x, y, static_cast<float>(v), 0);
    }
  }
  return image;
}

// The middle of a tile is out of reach of the blur's radius of 10 from the next tile.
double ValueOf(CImgSkyFlat& model, int row, int column) {
  return model.GetPixelGrayRaw(column * kTile + kTile / 2, row * kTile + kTile / 2, 0);
}

void ExpectValues(std::vector<std::vector<double>> const& expected, COrbImage src) {
  CImgSkyFlat model = Model(src, kTile);
  for (std::size_t row = 0; row < expected.size(); ++row) {
    for (std::size_t column = 0; column < expected[row].size(); ++column) {
      EXPECT_NEAR(expected[row][column], ValueOf(model, static_cast<int>(row), static_cast<int>(column)), 1e-3)
          << row << ' ' << column;
    }
  }
}

TEST(SkyFlat, EqualsThePlainStepsEverywhere) {
  Random random(1);
  for (int planes : {1, 3}) {
    for (auto const& [width, height] : {std::pair(1, 1), std::pair(9, 30), std::pair(100, 40), std::pair(73, 64)}) {
      COrbImage src = NoisySky(random, width, height, planes, 300, 20);
      for (int n = 0; n < width * height / 100; ++n) {
        AddStar(src, static_cast<int>(random() % 1000) % width, static_cast<int>(random() % 8) % height);
      }
      SetRandomLevels(src, random);
      for (int size : {1, 3, 8, 16, 32, 200}) {
        CImgSkyFlat dst;
        dst.CopyImage(RandomImage(random, width, height, planes), nullptr, nullptr);
        COrbImage expected(dst);
        CImgSkyFlat hostile(dst);
        COrbImage hostileSrc(src);
        MakeHostile(hostile);
        MakeHostile(hostileSrc);
        reference::SkyFlat(expected, src, size);
        COrbImage const before(src);
        dst.Do(size, &src, 0);
        hostile.Do(size, &hostileSrc, 0);
        EXPECT_TRUE(SameBits(expected, dst)) << width << ' ' << size;
        EXPECT_TRUE(SameBits(expected, hostile));
        EXPECT_TRUE(SameLevels(expected, dst));
        EXPECT_TRUE(SameBits(before, src));
        EXPECT_EQ(0, LocksLeft(hostile) + LocksLeft(hostileSrc));
      }
    }
  }
}

TEST(SkyFlat, TheSourceMayBeTheImage) {
  Random random(2);
  COrbImage src = NoisySky(random, 90, 70, 1);
  CImgSkyFlat copy;
  copy.CopyImage(src, nullptr, nullptr);
  copy.Do(16, &src, 0);
  CImgSkyFlat inPlace;
  inPlace.CopyImage(src, nullptr, nullptr);
  inPlace.Do(16, &inPlace, 0);
  EXPECT_TRUE(SameBits(copy, inPlace));
}

TEST(SkyFlat, IntendedASourceWithoutNoiseHasAModelOfZero) {
  COrbImage src = ConstantSky(64, 64, 1, 700.0f);
  CImgSkyFlat model = Model(src, 16);
  EXPECT_TRUE(SameBits(ConstantSky(64, 64, 1, 0.0f), model));
}

TEST(SkyFlat, IntendedMoreThanHalfOfTheTilesWithoutNoiseLeaveAllAtZero) {
  Random random(3);
  COrbImage src = ConstantSky(64, 16, 1, 700.0f);
  AddStar(src, 3, 3, 1.0f);
  CImgSkyFlat model = Model(src, 16);
  EXPECT_TRUE(SameBits(ConstantSky(64, 16, 1, 0.0f), model));
}

TEST(SkyFlat, CleanTilesKeepTheirMedianTruncated) {
  ExpectValues({{100, 103, 99}, {107, 108, 97}}, Tiles({{100.75, 103.5, 99.25}, {107, 108.9, 97.1}}));
}

TEST(SkyFlat, AStarTakesTheMeanOfFourNeighbours) {
  // (110 + 104 + 121 + 107) / 4 = 110.5
  ExpectValues({{90, 107, 91}, {104, 110, 110}, {92, 121, 93}},
               Tiles({{90, 107, 91}, {104, kHole, 110}, {92, 121, 93}}));
}

TEST(SkyFlat, DonorsGiveTheirMedianAsItIs) {
  // (10.75 + 11.5) / 2 = 11.125, where the truncated values would give 10.
  ExpectValues({{10, 11, 11}}, Tiles({{10.75, kHole, 11.5}}));
}

TEST(SkyFlat, ACornerHasTwoDonors) { ExpectValues({{130, 120}, {140, 190}}, Tiles({{kHole, 120}, {140, 190}})); }

TEST(SkyFlat, NeighbouringHolesDoNotUseEachOther) {
  ExpectValues({{100, 150, 150, 200, 100}}, Tiles({{100, kHole, kHole, 200, 100}}));
}

TEST(SkyFlat, ARowOfHolesTakesTheVerticalDirections) {
  ExpectValues({{100, 110, 120}, {150, 155, 160}, {200, 200, 200}},
               Tiles({{100, 110, 120}, {kHole, kHole, kHole}, {200, 200, 200}}));
}

TEST(SkyFlat, OneTileOfSkyFillsItsRowAndItsColumn) {
  ExpectValues({{0, 0, 80, 0}, {80, 80, 80, 80}, {0, 0, 80, 0}},
               Tiles({{0.5, 0.5, 0.5, 0.5}, {0.5, 0.5, 80, 0.5}, {0.5, 0.5, 0.5, 0.5}}));
}

TEST(SkyFlat, AMedianBelowOneIsAHoleThatStaysWithoutADonor) {
  ExpectValues({{0, 70}, {70, 70}}, Tiles({{0.5, 0.75}, {0.9, 70}}));
}

TEST(SkyFlat, NegativeMediansAreValues) { ExpectValues({{-20, -15, -10}}, Tiles({{-20.5, kHole, -10}})); }

TEST(SkyFlat, TheLimitIsFiveMedianDeviations) {
  // Deviations of a half, but one tile of 2.5, which is the limit itself and so a hole, and one just below.
  COrbImage src = Tiles({{100, 100, 100, 100, 100, 100, 100}});
  for (int y = 0; y < kTile; ++y) {
    for (int x = 0; x < kTile; ++x) {
      src.SetPixelGrayRaw(2 * kTile + x, y, (x + y) % 2 == 0 ? 302.5f : 297.5f, 0);
      src.SetPixelGrayRaw(4 * kTile + x, y, (x + y) % 2 == 0 ? 302.25f : 297.75f, 0);
    }
  }
  ExpectValues({{100, 100, 100, 100, 302, 100, 100}}, src);
}

TEST(SkyFlat, IntendedPlanesBeyondTheFirstAreBlurredAndNotPainted) {
  Random random(4);
  COrbImage src = NoisySky(random, 48, 40, 3);
  COrbImage before = RandomImage(random, 48, 40, 3);
  CImgFilterBlur blurred;
  blurred.CopyImage(before, nullptr, nullptr);
  blurred.GaussianFilter(5.0, &before, nullptr, 0);
  CImgSkyFlat model;
  model.CopyImage(before, nullptr, nullptr);
  model.Do(16, &src, 0);
  for (int p : {1, 2}) {
    for (int y = 0; y < 40; ++y) {
      for (int x = 0; x < 48; ++x) ASSERT_EQ(blurred.GetPixelGrayRaw(x, y, p), model.GetPixelGrayRaw(x, y, p));
    }
  }
  for (int x = 0; x < 48; ++x) EXPECT_NEAR(1000.0, model.GetPixelGrayRaw(x, 20, 0), 3.0);
}

TEST(SkyFlat, WithoutASizeTheImageIsOnlyBlurred) {
  Random random(5);
  COrbImage src = NoisySky(random, 30, 30, 1);
  for (int size : {0, -1, std::numeric_limits<int>::min()}) {
    CImgFilterBlur blurred;
    blurred.CopyImage(src, nullptr, nullptr);
    blurred.GaussianFilter(5.0, &src, nullptr, 0);
    CImgSkyFlat model;
    model.CopyImage(src, nullptr, nullptr);
    model.Do(size, &src, 0);
    EXPECT_TRUE(SameBits(blurred, model));
  }
}

TEST(SkyFlat, MediansBeyondTheRangeOfIntAreHeld) {
  COrbImage src = Tiles({{100, 100}});
  for (int y = 0; y < kTile; ++y) {
    for (int x = 0; x < kTile; ++x) src.SetPixelGrayRaw(kTile + x, y, 1e30f, 0);
  }
  CImgSkyFlat model = Model(src, kTile);
  EXPECT_NEAR(2147483647.0, ValueOf(model, 0, 1), 1e3);
}

TEST(SkyFlat, ToleratesEverySample) {
  Random random(6);
  for (int size : {1, 4, 50}) {
    COrbImage src = RandomImage(random, 40, 30, 3);
    StrewSpecialSamples(src, random);
    CImgSkyFlat model = Model(src, size);
    CImgSkyFlat again = Model(src, size);
    EXPECT_TRUE(SameValues(model, again));
  }
}

TEST(SkyFlat, TilesThatAreNoNumbersAreHoles) {
  for (float v : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
    COrbImage src = Tiles({{100, 9, 140}});
    src.SetPixelGrayRaw(kTile + 3, 3, v, 0);
    ExpectValues({{100, 120, 140}}, src);
  }
}

TEST(SkyFlat, ReportsMeasuringPaintingAndTheBlur) {
  Random random(7);
  COrbImage src = NoisySky(random, 100, 70, 3);
  CImgSkyFlat model;
  model.CopyImage(src, nullptr, nullptr);
  RecordingWindow window;
  window.escapeAtPoll = 3;
  model.SetProgressHandle(&window);
  model.Do(32, &src, 1);
  EXPECT_EQ((std::vector<std::string>{"スカイ中央値計算中...", "スカイフラット作成中...", "ガウスフィルタ処理中..."}),
            window.starts);
  EXPECT_EQ((std::vector<std::string>(3, "(null)")), window.ends);
  EXPECT_EQ(12 + 12 + 3 * 70, window.polls);
}

TEST(SkyFlat, IntendedTheBlurReportsWithoutBeingAsked) {
  Random random(8);
  COrbImage src = NoisySky(random, 100, 70, 1);
  CImgSkyFlat model;
  model.CopyImage(src, nullptr, nullptr);
  RecordingWindow window;
  model.SetProgressHandle(&window);
  model.Do(32, &src, 0);
  EXPECT_EQ((std::vector<std::string>{"ガウスフィルタ処理中..."}), window.starts);
  EXPECT_EQ((std::vector<std::string>{"(null)"}), window.ends);
  EXPECT_EQ(70, window.polls);
}

}  // namespace
}  // namespace orb::test
