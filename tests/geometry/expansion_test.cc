// CImgExpansion: the map of a planet, against the plain formula and by worked numbers.
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/expansion_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using reference::ExpansionArguments;

struct Map : CImgExpansion {
  explicit Map(COrbImage const& shape) { CopyImage(shape, nullptr, nullptr); }
  Map(int newWidth, int newHeight, int newPlanes = 1)
      : Map(COrbImage(-32, newWidth, newHeight, newPlanes, 1.0, 0.0, 1, nullptr, nullptr)) {
    FillJunk(*this);
  }

  void Draw(COrbImage& src, ExpansionArguments const& a, CRect* rect = nullptr, int progress = 0) {
    Do(&src, a.cx, a.cy, a.radius, a.tiltY, a.tiltX, a.flattening, a.grid, rect, progress);
  }
  float At(int x, int y, int plane = 0) { return GetPixelGrayRaw(x, y, plane); }
};

// Each sample tells its place: 1000 y + x + 1, so that none is 0. Levels -50 to 400.
COrbImage PlaceImage(int width, int height, int planes = 1) {
  COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
  for (int p = 0; p < planes; ++p) {
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) image.SetPixelGrayRaw(x, y, static_cast<float>(1000 * y + x + 1), p);
    }
    image.CImage::SetLevel(p, -50.0 - p, 400.0 + 10 * p);
  }
  return image;
}

// A disk in the middle of 101 x 101 samples, of radius 40.
ExpansionArguments MiddleDisk() {
  ExpansionArguments a;
  a.cx = a.cy = 50.0;
  a.radius = 40.0;
  return a;
}

std::vector<int> RowsWith(Map& map, int column, float value) {
  std::vector<int> rows;
  for (int y = 0; y < map.GetHeight(); ++y) {
    if (map.At(column, y) == value) rows.push_back(y);
  }
  return rows;
}

std::vector<int> ColumnsWith(Map& map, int row, float value) {
  std::vector<int> columns;
  for (int x = 0; x < map.GetWidth(); ++x) {
    if (map.At(x, row) == value) columns.push_back(x);
  }
  return columns;
}

ExpansionArguments RandomArguments(Random& random, int width, int height) {
  auto const number = [&](double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  };
  ExpansionArguments a;
  a.cx = number(-0.2, 1.2) * width;
  a.cy = number(-0.2, 1.2) * height;
  a.radius = number(-0.2, 1.0) * width;
  if (random() % 3 != 0) a.tiltY = number(-200.0, 200.0);
  if (random() % 3 != 0) a.tiltX = number(-200.0, 200.0);
  if (random() % 4 == 0) a.tiltY = 90.0;
  if (random() % 2 != 0) a.flattening = number(-0.2, 1.5);
  a.grid = static_cast<int>(random() % 2);
  return a;
}

TEST(Expansion, EqualsThePlainFormula) {
  Random random(91);
  for (int i = 0; i < 120; ++i) {
    auto const pick = [&](int least, int most) {
      return least + static_cast<int>(random() % static_cast<unsigned>(most - least + 1));
    };
    int const planes = i % 2 == 0 ? 1 : 3;
    COrbImage src = RandomImage(random, pick(2, 40), pick(2, 30), planes);
    if (i % 5 == 0) StrewSpecialSamples(src, random);
    ExpansionArguments const a = RandomArguments(random, src.GetWidth(), src.GetHeight());
    int const width = pick(1, 60);
    int const height = pick(1, 40);
    for (RectCase& c : RectCases(width, height)) {
      Map map(width, height, planes);
      COrbImage expected(map);
      reference::Expansion(expected, src, a, c.Pointer());
      map.Draw(src, a, c.Pointer());
      ASSERT_TRUE(SameValues(expected, map)) << i << ' ' << c.name << ' ' << width << 'x' << height;
      ASSERT_TRUE(SameLevels(src, map));
    }
  }
}

// Whole degrees and whole pixels, where positions fall on samples, on the last column and on the poles.
TEST(Expansion, EqualsThePlainFormulaAtRoundNumbers) {
  COrbImage src = PlaceImage(17, 17);
  for (double const tiltY : {0.0, 30.0, 90.0, -90.0, 180.0}) {
    for (double const tiltX : {0.0, 90.0, 180.0}) {
      for (double const radius : {0.0, 8.0, 16.0, -8.0}) {
        for (double const flattening : {1.0, 0.0}) {
          ExpansionArguments a;
          a.cx = a.cy = 8.0;
          a.radius = radius;
          a.tiltY = tiltY;
          a.tiltX = tiltX;
          a.flattening = flattening;
          Map map(72, 36);
          COrbImage expected(map);
          reference::Expansion(expected, src, a, nullptr);
          map.Draw(src, a);
          ASSERT_TRUE(SameBits(expected, map)) << tiltY << ' ' << tiltX << ' ' << radius;
        }
      }
    }
  }
}

TEST(Expansion, FrameOfAspectTwoToOne) {
  COrbImage src = PlaceImage(101, 101);
  Map fitting(200, 100);
  fitting.Draw(src, MiddleDisk());
  EXPECT_TRUE(ColumnsWith(fitting, 50, -50.0f).empty());
  EXPECT_TRUE(RowsWith(fitting, 100, -50.0f).empty());

  Map wide(300, 100);
  wide.Draw(src, MiddleDisk());
  for (int x = 0; x < 300; ++x) EXPECT_EQ(x < 50 || x >= 250, wide.At(x, 30) == -50.0f) << x;

  Map high(200, 200);
  high.Draw(src, MiddleDisk());
  for (int y = 0; y < 200; ++y) EXPECT_EQ(y < 50 || y >= 150, high.At(100, y) == -50.0f) << y;
}

// Halves are truncated: 7 wide is a frame 3 high, one row of the 6 above it and two below.
TEST(Expansion, FrameOfOddSizes) {
  COrbImage src = PlaceImage(101, 101);
  Map odd(7, 6);
  odd.Draw(src, MiddleDisk());
  EXPECT_EQ((std::vector<int>{0, 4, 5}), RowsWith(odd, 3, -50.0f));
  Map wide(9, 3);
  wide.Draw(src, MiddleDisk());
  EXPECT_EQ((std::vector<int>{0, 7, 8}), ColumnsWith(wide, 1, -50.0f));
}

TEST(Expansion, TheMiddleReadsTheCentreOfTheDisk) {
  COrbImage src = PlaceImage(101, 101);
  Map map(360, 180);
  map.Draw(src, MiddleDisk());
  EXPECT_EQ(50051.0f, map.At(180, 90));
  EXPECT_FLOAT_EQ(50051.0f + 20.0f, map.At(210, 90));  // 30 degrees to the right: half the radius
  EXPECT_FLOAT_EQ(50051.0f - 20000.0f, map.At(180, 60));
}

TEST(Expansion, TheFarSideIsZero) {
  COrbImage src = PlaceImage(101, 101);
  Map map(200, 100);
  map.Draw(src, MiddleDisk());
  for (int x = 0; x < 200; ++x) EXPECT_EQ(x < 50 || x > 150, map.At(x, 50) == 0.0f) << x;
}

// Intended: also the pixels of the far side, as 1.0 * sin 90 leaves the point exactly on the axis.
TEST(Expansion, ThePoleIsReadOnTheRim) {
  COrbImage src = PlaceImage(101, 101);
  Map map(200, 100);
  map.Draw(src, MiddleDisk());
  for (int x = 0; x < 200; ++x) EXPECT_EQ(10051.0f, map.At(x, 0)) << x;
  ExpansionArguments upsideDown = MiddleDisk();
  upsideDown.radius = -40.0;
  map.Draw(src, upsideDown);
  for (int x = 0; x < 200; ++x) EXPECT_EQ(90051.0f, map.At(x, 0)) << x;
}

TEST(Expansion, TiltsTipTheNorthForwardAndTurnItAnticlockwise) {
  COrbImage src = PlaceImage(101, 101);
  ExpansionArguments a = MiddleDisk();
  a.tiltY = 30.0;
  Map map(360, 180);
  map.Draw(src, a);
  EXPECT_FLOAT_EQ(50051.0f, map.At(180, 60));  // the middle of the disk is now at 30 degrees north
  a.tiltY = 0.0;
  a.tiltX = 90.0;
  map.Draw(src, a);
  // The pole lies on the left of the disk.
  EXPECT_NEAR(50011.0, map.At(180, 1), 1.0);
}

// Intended: 0.0 beyond the source, not the black of the levels.
TEST(Expansion, BeyondTheSourceIsZero) {
  COrbImage src = PlaceImage(101, 101);
  ExpansionArguments a = MiddleDisk();
  a.cx = 100.0;
  Map map(200, 100);
  map.Draw(src, a);
  EXPECT_EQ(50101.0f, map.At(100, 50));  // the last column still counts
  EXPECT_EQ(0.0f, map.At(101, 50));
  a.cx = std::numeric_limits<double>::quiet_NaN();
  map.Draw(src, a);
  EXPECT_EQ(0.0f, map.At(100, 50));
}

// Intended: beside the frame it is the black of plane 0 for every plane.
TEST(Expansion, BesideTheFrameIsTheBlackOfPlane0) {
  COrbImage src = PlaceImage(101, 101, 3);
  Map map(40, 10, 3);
  map.Draw(src, MiddleDisk());
  for (int p = 0; p < 3; ++p) EXPECT_EQ(-50.0f, map.At(0, 5, p));
}

TEST(Expansion, NoFlatteningAtAllIsTheEquator) {
  COrbImage src = PlaceImage(101, 101);
  ExpansionArguments a = MiddleDisk();
  a.flattening = 0.0;
  Map map(200, 100);
  map.Draw(src, a);
  for (int y = 1; y < 100; ++y) EXPECT_EQ(50051.0f, map.At(100, y)) << y;
}

// A line every 30 degrees.
TEST(Expansion, SevenParallelsAndThirteenMeridians) {
  COrbImage src = PlaceImage(101, 101);
  src.CImage::SetLevel(0, 0.0, 1e6);
  ExpansionArguments a = MiddleDisk();
  a.grid = 1;
  Map map(361, 181);
  map.Draw(src, a);
  // 180 high and 361 wide; the last of each step falls on the last row and column.
  EXPECT_EQ((std::vector<int>{0, 29, 59, 89, 119, 149, 179}), RowsWith(map, 5, 1e6f));
  EXPECT_EQ((std::vector<int>{0, 30, 60, 90, 120, 150, 180, 210, 240, 270, 300, 330, 360}), ColumnsWith(map, 40, 1e6f));
}

// Intended: parallels in plane 0's maximum, meridians in the plane's own.
TEST(Expansion, LinesHaveLevelsOfTheirOwn) {
  COrbImage src = PlaceImage(101, 101, 3);
  ExpansionArguments a = MiddleDisk();
  a.grid = 1;
  Map map(200, 100, 3);
  map.Draw(src, a);
  int const parallel = static_cast<int>(99 / 6.0);
  int const meridian = static_cast<int>(199 / 12.0);
  for (int p = 0; p < 3; ++p) {
    EXPECT_EQ(400.0f, map.At(10, parallel, p));
    EXPECT_EQ(400.0f + 10.0f * static_cast<float>(p), map.At(meridian, 10, p));
    EXPECT_EQ(400.0f + 10.0f * static_cast<float>(p), map.At(meridian, parallel, p));  // meridians come last
  }
}

// Parallels go all across the rectangle, meridians over the map alone.
TEST(Expansion, ParallelsGoBesideTheFrame) {
  COrbImage src = PlaceImage(101, 101);
  ExpansionArguments a = MiddleDisk();
  a.grid = 1;
  Map wide(300, 100);
  wide.Draw(src, a);
  EXPECT_EQ(400.0f, wide.At(0, 0));
  EXPECT_EQ(400.0f, wide.At(299, 99));
  Map high(200, 200);
  high.Draw(src, a);
  EXPECT_EQ(-50.0f, high.At(0, 49));
  EXPECT_EQ(400.0f, high.At(0, 50));
  EXPECT_EQ(400.0f, high.At(0, 149));
  EXPECT_EQ(-50.0f, high.At(0, 150));
}

// Intended: lines take the rectangle's right and bottom as part of it.
TEST(Expansion, LinesReachOnePixelBeyondTheRectangle) {
  COrbImage src = PlaceImage(101, 101);
  ExpansionArguments a = MiddleDisk();
  a.grid = 1;
  int const parallel = static_cast<int>(99 * 6 / 18.0);
  int const meridian = static_cast<int>(199 * 6 / 36.0);
  Map map(200, 100);
  CRect rect(20, 20, meridian, parallel);
  map.Draw(src, a, &rect);
  EXPECT_EQ(400.0f, map.At(25, parallel));
  EXPECT_EQ(400.0f, map.At(meridian, 25));
  EXPECT_EQ(400.0f, map.At(meridian, parallel));
  Map untouched(200, 100);
  EXPECT_EQ(untouched.At(25, parallel + 1), map.At(25, parallel + 1));
  EXPECT_EQ(untouched.At(meridian + 1, 25), map.At(meridian + 1, 25));
  EXPECT_EQ(untouched.At(19, parallel), map.At(19, parallel));
  Map smaller(200, 100);
  rect = CRect(20, 20, meridian - 1, parallel - 1);
  smaller.Draw(src, a, &rect);
  EXPECT_EQ(untouched.At(25, parallel), smaller.At(25, parallel));
  EXPECT_EQ(untouched.At(meridian, 25), smaller.At(meridian, 25));
}

TEST(Expansion, TakesTheLevelsAndKeepsThePoints) {
  Random random(92);
  COrbImage src = RandomImage(random, 20, 20, 3);
  Map map(40, 20, 3);
  map.SetStdPt(1, CfPoint(4.5, 6.0));
  map.SetStdCtr(3, 2);
  CRect nothing(5, 5, 5, 5);
  map.Draw(src, MiddleDisk(), &nothing);
  EXPECT_TRUE(SameLevels(src, map));
  EXPECT_EQ(1, map.GetStdPtNum());
  EXPECT_EQ(4.5, map.GetStdPt(1).fx);
  EXPECT_EQ(3, map.GetStdCtr().x);
}

// A source of equal samples has no other than black, white, its own and 0.
TEST(Expansion, EverySizeOfMapAndSource) {
  for (int const width : {0, 1, 2, 3}) {
    for (int const height : {0, 1, 2, 3}) {
      for (int const side : {0, 1, 2}) {
        COrbImage src(-32, side, side, 1, 1.0, 0.0, 1, nullptr, nullptr);
        SetSamples(src, std::vector<float>(static_cast<std::size_t>(side * side), 5.0f));
        src.CImage::SetLevel(0, 1.0, 9.0);
        for (double const radius : {0.0, 0.4, 1e300}) {
          for (int const grid : {0, 1}) {
            ExpansionArguments a;
            a.radius = radius;
            a.grid = grid;
            Map map(width, height);
            map.Draw(src, a);
            for (float const v : SamplesOf(map)) {
              EXPECT_TRUE(v == 0.0f || v == 1.0f || (v == 9.0f && grid != 0) || (v == 5.0f && side > 0)) << v;
            }
          }
        }
      }
    }
  }
}

TEST(Expansion, ProgressCountsRowsOfEveryPlane) {
  RecordingWindow window;
  window.escapeAtPoll = 3;
  COrbImage src = PlaceImage(20, 20, 3);
  ExpansionArguments a = MiddleDisk();
  a.grid = 1;
  Map map(20, 10, 3);
  map.SetProgressHandle(&window);
  CRect rect(2, 1, 18, 6);
  map.Draw(src, a, &rect, 1);
  EXPECT_EQ(std::vector<std::string>{"展開中..."}, window.starts);
  EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
  EXPECT_EQ(15, OrbTestAccess::ProgressOf(map).total);
  EXPECT_EQ(15, window.polls);
  window = RecordingWindow();
  map.Draw(src, a, &rect);
  EXPECT_TRUE(window.IsSilent());
}

TEST(Expansion, WorksOnAHostileStore) {
  COrbImage src = PlaceImage(101, 101, 3);
  ExpansionArguments a = MiddleDisk();
  a.grid = 1;
  Map expected(50, 30, 3);
  Map map(50, 30, 3);
  expected.Draw(src, a);
  MakeHostile(map);
  MakeHostile(src);
  map.Draw(src, a);
  EXPECT_TRUE(SameBits(expected, map));
  EXPECT_EQ(0, LocksLeft(map));
  EXPECT_EQ(0, LocksLeft(src));
}

TEST(Expansion, IsAnOperatorThatCopies) {
  Random random(94);
  Map const a(RandomImage(random, 5, 4, 3));
  CImgExpansion const b(a);
  CImgExpansion c;
  c = b;
  EXPECT_TRUE(SameBits(a, b));
  EXPECT_TRUE(SameBits(a, c));
}

}  // namespace
}  // namespace orb::test
