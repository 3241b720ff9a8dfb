// CImgSkySelect: how the tiles lie, their deviations, the tile that is found.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/sky/sky_tile_internal.h>
#include <orbimg/sky/sky_tiles_internal.h>
#include <tests/reference/sky_tiles_reference.h>
#include <tests/sky/sky_image.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>

namespace orb::test {
namespace {

CRect NoTile() { return CRect(-1, -2, -3, -4); }

bool IsSame(CRect const& a, CRect const& b) {
  return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

CImgSkySelect Selection(COrbImage const& image) {
  CImgSkySelect selection;
  selection.CopyImage(image, nullptr, nullptr);
  return selection;
}

double DeviationMedian(CImgSkySelect& image, int size, CRect* rect = nullptr) {
  double result = -1.0;
  image.CalcStddevMedian(size, rect, &result, 0);
  return result;
}

// Where the tile lies that is found; NoTile where none is.
CRect Find(CImgSkySelect& image, int size, double threshold, CRect* rect = nullptr) {
  CRect found = NoTile();
  int const result = image.Do(size, rect, threshold, &found, 0);
  EXPECT_EQ(result, IsSame(NoTile(), found) ? 0 : 1);
  return found;
}

std::vector<std::pair<int, int>> Spans(int from, int to, int size) {
  std::vector<std::pair<int, int>> spans;
  for (TileSpan const& span : SpanTiles(from, to, size)) spans.emplace_back(span.begin, span.extent);
  return spans;
}

using Pairs = std::vector<std::pair<int, int>>;

TEST(SkyTiles, TheLastTileTakesWhatRemains) {
  EXPECT_EQ((Pairs{{0, 32}, {32, 32}, {64, 32}, {96, 4}}), Spans(0, 100, 32));
  EXPECT_EQ((Pairs{{0, 32}, {32, 32}}), Spans(0, 64, 32));
}

TEST(SkyTiles, IntendedTheLastTileIsCountedFromZero) {
  EXPECT_EQ((Pairs{{10, 32}, {42, 32}, {74, 32}}), Spans(10, 100, 32));
  // The corner on a multiple of the size: the smaller tiles begin too early.
  EXPECT_EQ((Pairs{{32, 32}, {64, 4}, {96, 4}}), Spans(32, 100, 32));
}

TEST(SkyTiles, IntendedASingleTileKeepsItsSize) { EXPECT_EQ((Pairs{{0, 32}}), Spans(0, 20, 32)); }

TEST(SkyTiles, NoneForNoLengthAndForNoSize) {
  EXPECT_TRUE(Spans(5, 5, 32).empty());
  EXPECT_TRUE(Spans(9, 5, 32).empty());
  EXPECT_TRUE(Spans(0, 100, 0).empty());
  EXPECT_TRUE(Spans(0, 100, -7).empty());
}

TEST(SkyTiles, SizesAtTheEndOfTheRange) {
  constexpr int kMost = std::numeric_limits<int>::max();
  EXPECT_EQ((Pairs{{0, kMost}}), Spans(0, 20, kMost));
  EXPECT_EQ((Pairs{{7, kMost}}), Spans(7, 20, kMost));
  Random random(1);
  CImgSkySelect image = Selection(NoisySky(random, 20, 10, 1));
  CRect rect(7, 3, 20, 10);
  EXPECT_TRUE(IsSame(CRect(7, 3, kMost, kMost), Find(image, kMost, 1e9, &rect)));
}

TEST(SkySelection, EqualsThePlainWalkEverywhere) {
  Random random(2);
  for (int planes : {1, 3}) {
    for (auto const& [width, height] : {std::pair(1, 1), std::pair(37, 12), std::pair(40, 7), std::pair(100, 40)}) {
      COrbImage const image = RandomImage(random, width, height, planes);
      CImgSkySelect selection = Selection(image);
      CImgSkySelect hostile = Selection(image);
      MakeHostile(hostile);
      for (int size : {1, 2, 5, 8, 32, 64}) {
        for (RectCase& c : RectCases(width, height)) {
          auto const tiles = reference::MeasureTiles(selection, size, c.Pointer());
          if (tiles.empty()) continue;
          double const median = reference::DeviationMedian(tiles);
          EXPECT_EQ(median, DeviationMedian(selection, size, c.Pointer())) << c.name << size;
          EXPECT_EQ(median, DeviationMedian(hostile, size, c.Pointer()));
          for (double threshold : {median, median * 0.9, tiles.back().stddev, tiles[0].stddev, -1.0, 1e30}) {
            reference::Tile const* const tile = reference::FirstTileWithin(tiles, threshold);
            CRect const expected =
                tile == nullptr ? NoTile() : CRect(tile->x, tile->y, tile->x + tile->width, tile->y + tile->height);
            EXPECT_TRUE(IsSame(expected, Find(selection, size, threshold, c.Pointer()))) << c.name << size;
            EXPECT_TRUE(IsSame(expected, Find(hostile, size, threshold, c.Pointer())));
          }
        }
      }
      EXPECT_TRUE(SameBits(image, selection));
      EXPECT_TRUE(SameLevels(image, selection));
      EXPECT_EQ(0, LocksLeft(hostile));
    }
  }
}

TEST(SkySelection, TheMedianIsTheUpperOfTheTwoMiddleTiles) {
  // Four tiles of two samples each; their deviations are 1, 2, 3 and 4.
  COrbImage image(-32, 8, 1, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, {10, 12, 10, 16, 10, 18, 10, 14});
  CImgSkySelect selection = Selection(image);
  EXPECT_EQ(3.0, DeviationMedian(selection, 2));
  EXPECT_TRUE(IsSame(CRect(0, 0, 2, 2), Find(selection, 2, 3.0)));
}

TEST(SkySelection, BelowEveryDeviationThereIsNoTile) {
  Random random(3);
  CImgSkySelect image = Selection(NoisySky(random, 64, 64, 1));
  EXPECT_TRUE(IsSame(NoTile(), Find(image, 32, 0.5)));
}

TEST(SkySelection, TheLowestDeviationFindsTheFirstTileThatHasIt) {
  COrbImage image = ConstantSky(12, 4, 1, 50.0f);
  image.SetPixelGrayRaw(0, 0, 90.0f, 0);
  image.SetPixelGrayRaw(5, 2, 58.0f, 0);  // the second tile and the third are equally smooth
  image.SetPixelGrayRaw(9, 1, 42.0f, 0);
  CImgSkySelect selection = Selection(image);
  double const lowest = reference::MeasureTiles(selection, 4, nullptr)[1].stddev;
  EXPECT_TRUE(IsSame(CRect(4, 0, 8, 4), Find(selection, 4, lowest)));
}

TEST(SkySelection, TilesOfAnImageOf100By100) {
  // Stars in all tiles but the last one, of 4 by 4 pixels.
  Random random(4);
  COrbImage image = NoisySky(random, 100, 100, 1);
  for (int y = 5; y < 100; y += 32) {
    for (int x = 5; x < 96; x += 32) AddStar(image, x, y);
  }
  for (int y = 5; y < 96; y += 32) AddStar(image, 98, y);
  for (int x = 5; x < 96; x += 32) AddStar(image, x, 98);
  CImgSkySelect selection = Selection(image);
  EXPECT_EQ(16u, reference::MeasureTiles(selection, 32, nullptr).size());
  EXPECT_TRUE(IsSame(CRect(96, 96, 100, 100), Find(selection, 32, 5.0)));
}

TEST(SkySelection, IntendedARectangleOffTheCornerKeepsTheLastTileLarge) {
  Random random(5);
  COrbImage image = NoisySky(random, 100, 32, 1);
  AddStar(image, 12, 5);
  AddStar(image, 44, 5);
  CImgSkySelect selection = Selection(image);
  CRect rect(10, 0, 100, 32);
  EXPECT_TRUE(IsSame(CRect(74, 0, 106, 32), Find(selection, 32, 5.0, &rect)));
}

TEST(SkySelection, OnlyPlaneZeroCounts) {
  Random random(6);
  COrbImage image = NoisySky(random, 64, 32, 3);
  AddStar(image, 3, 3);
  for (int p : {1, 2}) image.SetPixelGrayRaw(40, 3, 60000.0f, p);
  CImgSkySelect selection = Selection(image);
  EXPECT_TRUE(IsSame(CRect(32, 0, 64, 32), Find(selection, 32, 5.0)));
}

TEST(SkySelection, WithoutATileThereIsNoDeviationAndNothingIsFound) {
  Random random(7);
  CImgSkySelect image = Selection(NoisySky(random, 16, 16, 1));
  CRect empty(4, 4, 4, 9);
  CRect reversed(9, 9, 2, 2);
  for (CRect* rect : {&empty, &reversed}) {
    EXPECT_EQ(0.0, DeviationMedian(image, 4, rect));
    EXPECT_TRUE(IsSame(NoTile(), Find(image, 4, 1e30, rect)));
  }
  EXPECT_EQ(0.0, DeviationMedian(image, 0));
}

TEST(SkySelection, TilesWithoutNumbersRankLastAndAreNotFound) {
  COrbImage image = ConstantSky(6, 2, 1, 1.0f);
  image.SetPixelGrayRaw(0, 0, std::numeric_limits<float>::quiet_NaN(), 0);
  image.SetPixelGrayRaw(2, 0, std::numeric_limits<float>::infinity(), 0);
  image.SetPixelGrayRaw(4, 0, 5.0f, 0);
  CImgSkySelect selection = Selection(image);
  // Of three tiles only the last one has a deviation, of sqrt(3), and the middle one is no number.
  EXPECT_TRUE(std::isnan(DeviationMedian(selection, 2)));
  EXPECT_TRUE(IsSame(CRect(4, 0, 6, 2), Find(selection, 2, 1e30)));
}

TEST(SkySelection, ProgressCountsTiles) {
  Random random(8);
  CImgSkySelect image = Selection(NoisySky(random, 100, 70, 3));
  RecordingWindow window;
  window.escapeAtPoll = 2;
  image.SetProgressHandle(&window);
  double median = 0.0;
  CRect found;
  image.CalcStddevMedian(32, nullptr, &median, 0);
  image.Do(32, nullptr, 1.0, &found, 0);
  EXPECT_TRUE(window.IsSilent());
  image.CalcStddevMedian(32, nullptr, &median, 1);
  EXPECT_EQ(12, window.polls);
  EXPECT_EQ(12u, window.positions.size());
  EXPECT_EQ(100, window.positions.back());
  image.Do(32, nullptr, 1.0, &found, 1);
  EXPECT_EQ(24, window.polls);
  EXPECT_EQ((std::vector<std::string>(2, "スカイ中央値計算中...")), window.starts);
  EXPECT_EQ((std::vector<std::string>(2, "(null)")), window.ends);
}

}  // namespace
}  // namespace orb::test
