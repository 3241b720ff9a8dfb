// CImgMosic: two images on one canvas, against the plain transcription and by worked numbers.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/reference/mosaic_reference.h>
#include <tests/support/canonical_nans.h>
#include <tests/support/hostile_store.h>
#include <tests/support/orb_test_access.h>
#include <tests/support/plain_images.h>
#include <tests/support/recording_window.h>
#include <tests/support/special_samples.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using reference::MosaicArguments;

void Apply(CImgMosic& canvas, COrbImage& first, COrbImage& second, MosaicArguments c, CRect* rect = nullptr,
           int progress = 0) {
  canvas.Do(&first, c.ox, c.oy, &second, c.dx, c.dy, c.angle, c.mode, c.key, &c.outside, c.to256, c.average, rect,
            progress);
}

// Few different samples, so that keys match and ties happen.
void Coarsen(COrbImage& image) {
  for (int p = 0; p < image.GetPlanes(); ++p) {
    for (int y = 0; y < image.GetHeight(); ++y) {
      for (int x = 0; x < image.GetWidth(); ++x) {
        image.SetPixelGrayRaw(x, y, std::round(image.GetPixelGrayRaw(x, y, p) / 100.0f) * 0.5f, p);
      }
    }
  }
}

void ExpectPlainMosaic(COrbImage const& shape, COrbImage& first, COrbImage& second, MosaicArguments const& c,
                       CRect* rect, std::string const& what) {
  CImgMosic canvas;
  canvas.CopyImage(shape, nullptr, nullptr);
  FillJunk(canvas);
  COrbImage expected(canvas);
  reference::Mosaic(expected, first, second, c, rect);
  Apply(canvas, first, second, c, rect);
  ASSERT_TRUE(SameValues(expected, canvas)) << what;
  ASSERT_TRUE(SameLevels(expected, canvas)) << what;
}

// What a canvas of one pixel shows of two images of 2 x 2 equal pixels.
std::vector<float> PixelOf(std::vector<float> const& a, std::vector<float> const& b, MosaicArguments const& c,
                           int planes, double levelMin = 0.0, double levelMax = 255.0) {
  COrbImage first = Constant(2, 2, a);
  COrbImage second = Constant(2, 2, b);
  CImgMosic canvas;
  canvas.CopyImage(Empty(1, 1, planes), nullptr, nullptr);
  for (int p = 0; p < planes; ++p) canvas.CImage::SetLevel(p, levelMin, levelMax);
  Apply(canvas, first, second, c);
  return SamplesOf(canvas);
}

MosaicArguments Mode(int mode, int to256 = 0) {
  MosaicArguments c;
  c.mode = mode;
  c.to256 = to256;
  return c;
}

TEST(Mosaic, EqualsThePlainFormulaInEveryModeAndScale) {
  Random random(51);
  std::uniform_real_distribution<double> shift(-6.0, 6.0);
  for (int mode = -1; mode <= 5; ++mode) {
    for (int const to256 : {0, 1}) {
      for (int const planes : {1, 3}) {
        for (int const sourcePlanes : {11, 13, 31, 33}) {
          COrbImage const shape = RandomImage(random, 31, 17, planes);
          COrbImage first = RandomImage(random, 19, 11, sourcePlanes / 10);
          COrbImage second = RandomImage(random, 17, 12, sourcePlanes % 10);
          second.SetStdCtr(8.5, 3.0);
          Coarsen(first);
          Coarsen(second);
          for (double const angle : {0.0, 4.0, -150.0}) {
            MosaicArguments c = Mode(mode, to256);
            c.ox = static_cast<int>(random() % 12) - 3;
            c.oy = static_cast<int>(random() % 8) - 3;
            c.dx = angle == 0.0 ? std::floor(shift(random)) : shift(random);
            c.dy = angle == 0.0 ? std::floor(shift(random)) : shift(random);
            c.angle = angle;
            for (float& key : c.key) key = static_cast<float>(random() % 5) * 0.5f;
            c.outside = 77.25f;
            c.average = random() % 5 == 0 ? 1 : 0;
            ExpectPlainMosaic(shape, first, second, c, nullptr,
                              "mode " + std::to_string(mode) + " to256 " + std::to_string(to256) + " planes " +
                                  std::to_string(planes) + "/" + std::to_string(sourcePlanes));
          }
        }
      }
    }
  }
}

TEST(Mosaic, EqualsThePlainFormulaOnEverySizeAndRectangle) {
  Random random(52);
  for (int const width : {1, 2, 3, 7, 16, 40}) {
    for (int const height : {1, 5, 12}) {
      for (int const planes : {1, 3}) {
        COrbImage const shape = RandomImage(random, width, height, planes);
        COrbImage first = RandomImage(random, std::max(width / 2, 2), std::max(height - 1, 2), planes);
        COrbImage second = RandomImage(random, width + 1, std::max(height / 2, 2), planes);
        second.SetDefaultCenter();
        for (RectCase& rect : RectCases(width, height)) {
          MosaicArguments c = Mode(static_cast<int>(random() % 5), static_cast<int>(random() % 2));
          c.ox = width / 4;
          c.dx = 0.75;
          c.dy = -1.25;
          c.angle = random() % 2 == 0 ? 0.0 : -20.0;
          c.outside = -8.5f;
          ExpectPlainMosaic(shape, first, second, c, rect.Pointer(),
                            rect.name + " " + std::to_string(width) + "x" + std::to_string(height));
        }
      }
    }
  }
}

TEST(Mosaic, SpecialSamplesAndNumbers) {
  double const infinity = std::numeric_limits<double>::infinity();
  double const nan = std::numeric_limits<double>::quiet_NaN();
  int const most = std::numeric_limits<int>::max();
  int const least = std::numeric_limits<int>::min();
  Random random(53);
  for (int mode = 0; mode <= 4; ++mode) {
    for (int const to256 : {0, 1}) {
      for (int const planes : {1, 3}) {
        COrbImage first = RandomImage(random, 17, 6, planes);
        COrbImage second = RandomImage(random, 17, 6, planes);
        second.SetStdCtr(8, 3);
        StrewSpecialSamples(first, random);
        StrewSpecialSamples(second, random);
        for (double const dx : {0.0, 0.5, 1e18, infinity, nan}) {
          for (int const ox : {0, 3, most, least}) {
            MosaicArguments c = Mode(mode, to256);
            c.ox = ox;
            c.oy = ox == most ? least : 0;
            c.dx = dx;
            c.angle = dx == 0.5 ? 30.0 : dx == 1e18 ? nan : 0.0;
            c.key[1] = std::numeric_limits<float>::quiet_NaN();
            c.outside = std::numeric_limits<float>::infinity();
            ExpectPlainMosaic(first, first, second, c, nullptr,
                              "mode " + std::to_string(mode) + " shift " + std::to_string(dx));
          }
        }
      }
    }
  }
}

TEST(Mosaic, ModesOfAMonoCanvas) {
  EXPECT_EQ((std::vector<float>{20}), PixelOf({10}, {20}, Mode(0), 1));
  EXPECT_EQ((std::vector<float>{20}), PixelOf({10}, {20}, Mode(2), 1));
  EXPECT_EQ((std::vector<float>{20}), PixelOf({20}, {10}, Mode(2), 1));
  EXPECT_EQ((std::vector<float>{10}), PixelOf({10}, {20}, Mode(3), 1));
  EXPECT_EQ((std::vector<float>{10}), PixelOf({20}, {10}, Mode(3), 1));
  for (int const mode : {4, 99, -1}) EXPECT_EQ((std::vector<float>{10}), PixelOf({10}, {20}, Mode(mode), 1));
}

TEST(Mosaic, TiesGiveTheFirst) {
  for (int const mode : {2, 3}) {
    EXPECT_FALSE(std::signbit(PixelOf({0.0f}, {-0.0f}, Mode(mode), 1)[0]));
    for (float const v : PixelOf({0, 0, 0}, {-0.0f, -0.0f, -0.0f}, Mode(mode), 3)) EXPECT_FALSE(std::signbit(v));
  }
}

// Brightness decides: 100 of green is lighter than 150 of red, and brings its dark planes along.
TEST(Mosaic, ColorNeverMixesPlanes) {
  std::vector<float> const red{150, 0, 30};
  std::vector<float> const green{0, 100, 20};
  EXPECT_EQ(green, PixelOf(red, green, Mode(2), 3));
  EXPECT_EQ(green, PixelOf(green, red, Mode(2), 3));
  EXPECT_EQ(red, PixelOf(red, green, Mode(3), 3));
  EXPECT_EQ(red, PixelOf(green, red, Mode(3), 3));
  EXPECT_EQ(green, PixelOf(red, green, Mode(0), 3));
  EXPECT_EQ(red, PixelOf(red, green, Mode(7), 3));
}

// Intended: a key must be closer than the tolerance, a 256th of the canvas's range.
TEST(Mosaic, ADifferenceOfExactlyTheToleranceDoesNotMatch) {
  MosaicArguments c = Mode(1);
  c.key[0] = 50.0f;
  auto const show = [&](float b, double range) { return PixelOf({7}, {b}, c, 1, 1000.0, 1000.0 + range)[0]; };
  EXPECT_EQ(7.0f, show(50.0f, 256.0));
  EXPECT_EQ(7.0f, show(50.75f, 256.0));
  EXPECT_EQ(7.0f, show(49.25f, 256.0));
  EXPECT_EQ(51.0f, show(51.0f, 256.0));
  EXPECT_EQ(49.0f, show(49.0f, 256.0));
  EXPECT_EQ(7.0f, show(51.0f, 512.0));
  EXPECT_EQ(52.0f, show(52.0f, 512.0));
  EXPECT_EQ(50.0f, show(50.0f, -256.0));
}

TEST(Mosaic, KeyOfA256ScaleIsSeenThroughTheLevelsOfTheCanvas) {
  MosaicArguments c = Mode(1, 1);
  c.key[0] = 1020.0f;  // of the levels 1000 to 1510: 10
  auto const show = [&](float b) { return PixelOf({200}, {b}, c, 1, 1000.0, 1510.0)[0]; };
  EXPECT_EQ(1400.0f, show(10.0f));
  EXPECT_EQ(1400.0f, show(10.75f));
  EXPECT_EQ(1022.0f, show(11.0f));
  EXPECT_EQ(1018.0f, show(9.0f));
}

TEST(Mosaic, ColorKeysAddTheirDifferences) {
  MosaicArguments c = Mode(1);
  c.key[0] = 10.0f;
  c.key[1] = 20.0f;
  c.key[2] = 30.0f;
  std::vector<float> const a{1, 2, 3};
  auto const show = [&](std::vector<float> const& b) { return PixelOf(a, b, c, 3, 0.0, 256.0); };
  EXPECT_EQ(a, show({10.25f, 19.75f, 30.25f}));
  EXPECT_EQ((std::vector<float>{10.25f, 19.75f, 30.5f}), show({10.25f, 19.75f, 30.5f}));
  EXPECT_EQ((std::vector<float>{10, 20, 31}), show({10, 20, 31}));
}

// Intended: each plane's key by its own levels, but the tolerance of raw samples by those of plane 0.
TEST(Mosaic, LevelsOfColorKeys) {
  COrbImage first = Constant(2, 2, {1, 2, 3});
  COrbImage second = Constant(2, 2, {10, 20, 33});
  CImgMosic canvas;
  canvas.CopyImage(Empty(1, 1, 3), nullptr, nullptr);
  canvas.CImage::SetLevel(0, 0.0, 1024.0);
  canvas.CImage::SetLevel(2, 0.0, 1.0);
  MosaicArguments c = Mode(1);
  c.key[0] = 10.0f;
  c.key[1] = 20.0f;
  c.key[2] = 30.0f;
  Apply(canvas, first, second, c);
  EXPECT_EQ((std::vector<float>{1, 2, 3}), SamplesOf(canvas));
  c.to256 = 1;
  canvas.CImage::SetLevel(0, 0.0, 255.0);
  canvas.CImage::SetLevel(2, -3.0, 252.0);  // 30 is 33 on the 256-scale
  Apply(canvas, first, second, c);
  EXPECT_EQ((std::vector<float>{1, 2, 0}), SamplesOf(canvas));
}

TEST(Mosaic, AverageIgnoresTheModeAndDropsToHalfAtTheSeam) {
  COrbImage first = Constant(3, 2, {100});
  COrbImage second = Constant(3, 2, {60});
  CImgMosic canvas;
  canvas.CopyImage(Empty(7, 2, 1), nullptr, nullptr);
  for (int mode = 0; mode < 5; ++mode) {
    MosaicArguments c = Mode(mode);
    c.ox = 1;
    c.dx = 2.0;
    c.average = 1;
    FillJunk(canvas);
    Apply(canvas, first, second, c);
    EXPECT_EQ((std::vector<float>{0, 50, 50, 80, 30, 30, 0, 0, 50, 50, 80, 30, 30, 0}), SamplesOf(canvas)) << mode;
  }
}

TEST(Mosaic, EachSourceShowsWhereItAloneCovers) {
  COrbImage first = Constant(3, 2, {100});
  COrbImage second = Constant(3, 2, {60});
  CImgMosic canvas;
  canvas.CopyImage(Empty(7, 2, 1), nullptr, nullptr);
  MosaicArguments c = Mode(3);
  c.ox = 1;
  c.dx = 2.0;
  Apply(canvas, first, second, c);
  EXPECT_EQ((std::vector<float>{0, 100, 100, 60, 60, 60, 0, 0, 100, 100, 60, 60, 60, 0}), SamplesOf(canvas));
  c.dx = -1.0;
  c.mode = 2;
  Apply(canvas, first, second, c);
  EXPECT_EQ((std::vector<float>{60, 100, 100, 100, 0, 0, 0, 60, 100, 100, 100, 0, 0, 0}), SamplesOf(canvas));
}

// Intended: only a mono canvas has `outside` off both sources, and only on the 256-scale.
TEST(Mosaic, OffBothSources) {
  for (int const planes : {1, 3}) {
    for (int const to256 : {0, 1}) {
      MosaicArguments c = Mode(0, to256);
      c.ox = 50;
      c.outside = 51.0f;
      float const expected = to256 == 0 ? 0.0f : planes == 1 ? 1102.0f : 1000.0f;
      std::vector<float> const source(static_cast<std::size_t>(planes), 9.0f);
      EXPECT_EQ(std::vector<float>(static_cast<std::size_t>(planes), expected),
                PixelOf(source, source, c, planes, 1000.0, 1510.0));
    }
  }
}

// Intended: on a colour canvas the first source has 0 outside and the second `outside`, as the mean shows.
TEST(Mosaic, OutsideValuesOfTheTwoSources) {
  MosaicArguments c = Mode(0, 1);
  c.average = 1;
  c.outside = 51.0f;
  c.ox = 50;
  EXPECT_EQ((std::vector<float>{51}), PixelOf({9}, {9}, c, 1));
  EXPECT_EQ((std::vector<float>(3, 25.5f)), PixelOf({9, 9, 9}, {9, 9, 9}, c, 3));
  c.to256 = 0;
  EXPECT_EQ((std::vector<float>(3, 0.0f)), PixelOf({9, 9, 9}, {9, 9, 9}, c, 3));
}

TEST(Mosaic, EveryImageHasItsOwnLevels) {
  COrbImage first = Constant(2, 2, {300});
  first.CImage::SetLevel(0, 100.0, 500.0);  // 127.5
  COrbImage second = Constant(2, 2, {30});
  second.CImage::SetLevel(0, 10.0, 110.0);  // 51
  CImgMosic canvas;
  canvas.CopyImage(Empty(1, 1, 1), nullptr, nullptr);
  canvas.CImage::SetLevel(0, 1000.0, 1510.0);
  Apply(canvas, first, second, Mode(2, 1));
  EXPECT_EQ(1255.0f, canvas.GetPixelGrayRaw(0, 0, 0));
  Apply(canvas, first, second, Mode(3, 1));
  EXPECT_EQ(1102.0f, canvas.GetPixelGrayRaw(0, 0, 0));
  EXPECT_EQ(1000.0, canvas.GetLevelMin(0));
  EXPECT_EQ(1510.0, canvas.GetLevelMax(0));
}

TEST(Mosaic, MonoAndColorMeet) {
  float const bright = static_cast<float>(0.114 * 50 + 0.587 * 200 + 0.299 * 100);
  EXPECT_EQ((std::vector<float>{bright}), PixelOf({7}, {100, 200, 50}, Mode(0), 1));
  EXPECT_EQ((std::vector<float>{bright}), PixelOf({100, 200, 50}, {7}, Mode(9), 1));
  EXPECT_EQ((std::vector<float>{7, 7, 7}), PixelOf({1, 2, 3}, {7}, Mode(0), 3));
}

TEST(Mosaic, ReadsKeyAndOutsideOnlyWhereTheyCount) {
  COrbImage first = Constant(2, 2, {10});
  COrbImage second = Constant(2, 2, {20});
  CImgMosic canvas;
  canvas.CopyImage(Empty(3, 2, 1), nullptr, nullptr);
  canvas.Do(&first, 0, 0, &second, 1.0, 0.0, 0.0, 2, nullptr, nullptr, 0, 0, nullptr, 0);
  EXPECT_EQ((std::vector<float>{10, 20, 20, 10, 20, 20}), SamplesOf(canvas));
}

// The second source turns about its own centre.
TEST(Mosaic, TurnsTheSecondAboutItsCentre) {
  COrbImage first = Constant(2, 2, {-1});
  COrbImage second = Empty(5, 5, 1);
  second.SetPixelGrayRaw(3, 2, 9.0f, 0);
  second.SetStdCtr(2, 2);
  CImgMosic canvas;
  canvas.CopyImage(Empty(20, 20, 1), nullptr, nullptr);
  MosaicArguments c;
  c.ox = 10;
  c.oy = 5;
  c.dx = 1.0;
  c.dy = 2.0;
  c.angle = 90.0;
  Apply(canvas, first, second, c);
  EXPECT_NEAR(9.0, canvas.GetPixelGrayRaw(13, 10, 0), 1e-5);
}

TEST(Mosaic, ProgressCountsRowsWhateverThePlanes) {
  for (int const planes : {1, 3}) {
    RecordingWindow window;
    COrbImage source = Empty(4, 6, planes);
    CImgMosic canvas;
    canvas.CopyImage(source, nullptr, nullptr);
    canvas.SetProgressHandle(&window);
    CRect rect(0, 1, 4, 5);
    Apply(canvas, source, source, Mode(0), &rect, 1);
    EXPECT_EQ(std::vector<std::string>{"モザイク合成中..."}, window.starts);
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
    EXPECT_EQ(4, OrbTestAccess::ProgressOf(canvas).total);
    EXPECT_EQ((std::vector<int>{25, 50, 75, 100}), window.positions);
    EXPECT_EQ(4, window.polls);
    window = RecordingWindow();
    Apply(canvas, source, source, Mode(0), &rect, 0);
    EXPECT_TRUE(window.IsSilent());
  }
}

TEST(Mosaic, EmptyRectanglesChangeNothing) {
  Random random(57);
  COrbImage source = RandomImage(random, 6, 8, 3);
  CRect const rects[] = {CRect(2, 2, 2, 6), CRect(0, 5, 6, 3), CRect(6, 8, 0, 0)};
  int const totals[] = {4, -2, -8};
  int const ticks[] = {4, 0, 0};
  for (int i = 0; i < 3; ++i) {
    RecordingWindow window;
    CImgMosic canvas;
    canvas.CopyImage(source, nullptr, nullptr);
    canvas.SetProgressHandle(&window);
    CRect rect = rects[i];
    Apply(canvas, source, source, Mode(0), &rect, 1);
    EXPECT_TRUE(SameBits(source, canvas));
    EXPECT_EQ(1u, window.starts.size());
    EXPECT_EQ(std::vector<std::string>{"(null)"}, window.ends);
    EXPECT_EQ(totals[i], OrbTestAccess::ProgressOf(canvas).total);
    EXPECT_EQ(ticks[i], window.polls);
  }
}

TEST(Mosaic, KeepsStandardPoints) {
  COrbImage source = Empty(4, 4, 1);
  source.SetStdPt(1, CfPoint(1, 1));
  CImgMosic canvas;
  canvas.CopyImage(Empty(4, 4, 1), nullptr, nullptr);
  canvas.SetStdPt(0, CfPoint(3, 4));
  Apply(canvas, source, source, Mode(0));
  EXPECT_EQ(3, canvas.GetStdPt(0).x);
  EXPECT_EQ(1, canvas.GetStdPtNum());
}

TEST(Mosaic, WorksOnAHostileStore) {
  Random random(58);
  for (int const planes : {1, 3}) {
    for (double const angle : {0.0, 10.0}) {
      COrbImage const shape = RandomImage(random, 20, 9, planes);
      COrbImage first = RandomImage(random, 12, 7, planes);
      COrbImage second = RandomImage(random, 10, 9, planes);
      second.SetStdCtr(5, 5);
      MosaicArguments c = Mode(2, 1);
      c.dx = 4.5;
      c.angle = angle;
      CImgMosic expected;
      expected.CopyImage(shape, nullptr, nullptr);
      CImgMosic canvas(expected);
      Apply(expected, first, second, c);
      MakeHostile(canvas);
      MakeHostile(first);
      MakeHostile(second);
      Apply(canvas, first, second, c);
      EXPECT_TRUE(SameBits(expected, canvas));
      for (COrbImage* each : {static_cast<COrbImage*>(&canvas), &first, &second}) EXPECT_EQ(0, LocksLeft(*each));
    }
  }
}

TEST(Mosaic, IsAnOperatorThatCopies) {
  Random random(59);
  CImgMosic a;
  a.CopyImage(RandomImage(random, 5, 4, 3), nullptr, nullptr);
  CImgMosic const b(a);
  CImgMosic c;
  c = b;
  EXPECT_TRUE(SameBits(a, b));
  EXPECT_TRUE(SameBits(a, c));
  EXPECT_TRUE(SameLevels(a, c));
}

}  // namespace
}  // namespace orb::test
