// orbimg mosaic: the canvas, the overlap, and the operator on them.
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/orbimg/mosaic_canvas.h>
#include <tests/command/command_support.h>
#include <tests/command/synthetic_stars.h>
#include <tests/support/test_images.h>
#include <nlohmann/json.hpp>

namespace orb::test {
namespace {

using host::Exit;
using host::FrameTransform;
using host::MosaicCanvas;
using host::Position;
using host::RigidMap;
using Json = nlohmann::json;

COrbImage Blank(int width, int height, int planes = 1) {
  return COrbImage(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
}

// The part of an image from a corner on.
COrbImage Cut(COrbImage const& image, int left, int top, int width, int height) {
  COrbImage part = Blank(width, height, image.GetPlanes());
  COrbImage whole(image);
  part.PixelBlt(0, 0, width, height, &whole, left, top, 0);
  return part;
}

TEST(MosaicCanvas, HoldsTheFirstImageAndThePositionsInTheSecond) {
  COrbImage const first = Blank(10, 8);
  COrbImage const second = Blank(6, 5);
  auto const canvasOf = [&](double dx, double dy) { return host::FindCanvas(first, second, {dx, dy, 0.0, 0.0, 0.0}); };
  auto const expect = [](MosaicCanvas const& canvas, int width, int height, int x, int y) {
    EXPECT_EQ(width, canvas.width);
    EXPECT_EQ(height, canvas.height);
    EXPECT_EQ(x, canvas.x);
    EXPECT_EQ(y, canvas.y);
  };
  expect(canvasOf(0.0, 0.0), 10, 8, 0, 0);
  expect(canvasOf(4.0, 3.0), 10, 8, 0, 0);
  expect(canvasOf(5.0, 4.0), 11, 9, 0, 0);
  expect(canvasOf(7.25, -2.5), 14, 10, 0, 2);  // rows from -2 on, which lies at 0.5 of the second
  expect(canvasOf(-0.25, -1.0), 10, 9, 0, 1);  // column -1 would lie at -0.75
  expect(canvasOf(-20.0, 30.0), 30, 35, 20, 0);
}

TEST(MosaicCanvas, HoldsATurnedImage) {
  COrbImage const first = Blank(20, 15);
  COrbImage const second = Blank(31, 17);
  Random random(5);
  std::uniform_real_distribution<double> shift(-40.0, 40.0);
  for (int i = 0; i < 50; ++i) {
    FrameTransform const transform{shift(random), shift(random), 9.0 * shift(random), 15.0, 8.0};
    MosaicCanvas const canvas = host::FindCanvas(first, second, transform);
    RigidMap const map(transform);
    EXPECT_LE(20 + canvas.x, canvas.width);
    EXPECT_LE(15 + canvas.y, canvas.height);
    for (int y = -80; y < 100; ++y) {
      for (int x = -80; x < 100; ++x) {
        Position const at = map.ToFrame({static_cast<double>(x), static_cast<double>(y)});
        if (at.x < 0.0 || at.x >= 31.0 || at.y < 0.0 || at.y >= 17.0) continue;
        ASSERT_TRUE(x + canvas.x >= 0 && x + canvas.x < canvas.width) << i << ' ' << x << ' ' << y;
        ASSERT_TRUE(y + canvas.y >= 0 && y + canvas.y < canvas.height) << i << ' ' << x << ' ' << y;
      }
    }
  }
}

TEST(MosaicCanvas, ComparesTheOverlapAlone) {
  Random random(6);
  COrbImage sky = RandomImage(random, 40, 30, 3);
  std::vector<float> whole = SamplesOf(sky);  // so that the differences are exact
  for (float& sample : whole) sample = std::floor(sample);
  SetSamples(sky, whole);
  COrbImage first = Cut(sky, 0, 0, 25, 30);
  COrbImage second = Cut(sky, 20, 4, 20, 26);
  for (int y = 0; y < 26; ++y) {
    for (int x = 0; x < 20; ++x) {
      for (int p = 0; p < 3; ++p) {
        second.SetPixelGrayRaw(x, y, static_cast<float>(second.GetPixelGrayRaw(x, y, p) - 8.0 * p), p);
      }
    }
  }
  for (int p = 0; p < 3; ++p) {
    auto const difference = host::CompareOverlap(first, second, {20.0, 4.0, 0.0, 0.0, 0.0}, p);
    EXPECT_EQ(8.0 * p, difference.level);
    EXPECT_EQ(5 * 26, difference.samples);
  }
  EXPECT_EQ(0, host::CompareOverlap(first, second, {60.0, 0.0, 0.0, 0.0, 0.0}, 0).samples);
}

class MosaicTest : public testing::Test {
 protected:
  void Write(int planes) {
    sky = RandomImage(random, 50, 40, planes);
    WriteFrame(folder / "a.fits", Cut(sky, 0, 3, 30, 37));
    WriteFrame(folder / "b.fits", Cut(sky, 22, 0, 28, 35));
  }

  CommandResult Run(std::vector<std::string> more) {
    more.insert(more.begin(), {"mosaic", folder / "a.fits", folder / "b.fits", "-o", folder / "m.fits"});
    return RunQuietly(more);
  }

  // What the operator makes of the two files on a canvas of 50 x 40.
  COrbImage Expected(int mode, bool isAverage) {
    host::Frame first = ReadFrame(folder / "a.fits");
    host::Frame second = ReadFrame(folder / "b.fits");
    CImgMosic canvas;
    COrbImage blank = Blank(50, 40, sky.GetPlanes());
    canvas.Swap(&blank);
    float key[3] = {50.0f, 50.0f, 50.0f};
    float outside = 0.0f;
    canvas.Do(&first.image, 0, 3, &second.image, 22.0, -3.0, 0.0, mode, key, &outside, 0, isAverage ? 1 : 0, nullptr,
              0);
    COrbImage result;
    result.Swap(&canvas);
    return result;
  }

  Random random{7};
  ScratchFolder folder;
  COrbImage sky;
};

TEST_F(MosaicTest, EveryModeIsTheOperatorsOnACanvasForBoth) {
  for (int planes : {1, 3}) {
    Write(planes);
    int mode = 0;
    for (char const* name : {"overwrite", "key", "lighter", "darker", "first"}) {
      ASSERT_TRUE(Succeeds(Run({"--dx", "22", "--dy", "-3", "--mode", name, "--key-red", "50", "--key-green", "50",
                                "--key-blue", "50", "-f"})));
      EXPECT_TRUE(SameBits(Expected(mode++, false), ReadFrame(folder / "m.fits").image)) << name;
    }
    ASSERT_TRUE(Succeeds(Run({"--dx", "22", "--dy", "-3", "--average", "-f"})));
    EXPECT_TRUE(SameBits(Expected(0, true), ReadFrame(folder / "m.fits").image));
    std::filesystem::remove(folder / "a.fits");
    std::filesystem::remove(folder / "b.fits");
  }
}

TEST_F(MosaicTest, LevelsOfTheFirstAndAHistory) {
  Write(1);
  ASSERT_TRUE(Succeeds(Run({"--dx", "22", "--dy", "-3"})));
  host::Frame const first = ReadFrame(folder / "a.fits");
  host::Frame const result = ReadFrame(folder / "m.fits");
  EXPECT_EQ(first.image.GetLevelMin(0), result.image.GetLevelMin(0));
  EXPECT_EQ(first.image.GetLevelMax(0), result.image.GetLevelMax(0));
  std::string cards;
  for (std::string const& card : result.header.cards) cards += card;
  EXPECT_NE(std::string::npos, cards.find("orbimg mosaic: x 0, y 3, mode overwrite")) << cards;
  EXPECT_NE(std::string::npos, cards.find("a.fits and b.fits dx 22.0000 dy -3.0000 angle 0.00000")) << cards;
}

TEST_F(MosaicTest, MatchedLevelsLeaveNoSeam) {
  COrbImage const even = SkyImage(50, 40, 1000.0, 0.0, 1);
  WriteFrame(folder / "a.fits", Cut(even, 0, 3, 30, 37));
  COrbImage dim = Cut(even, 22, 0, 28, 35);
  for (int y = 0; y < 35; ++y) {
    for (int x = 0; x < 28; ++x) dim.SetPixelGrayRaw(x, y, 750.0f, 0);
  }
  WriteFrame(folder / "b.fits", dim);
  ASSERT_TRUE(Succeeds(Run({"--dx", "22", "--dy", "-3", "--match-levels"})));
  COrbImage result = ReadFrame(folder / "m.fits").image;
  EXPECT_EQ(1000.0f, result.GetPixelGrayRaw(5, 20, 0));
  EXPECT_EQ(1000.0f, result.GetPixelGrayRaw(25, 20, 0));
  EXPECT_EQ(1000.0f, result.GetPixelGrayRaw(45, 20, 0));
  EXPECT_EQ(0.0f, result.GetPixelGrayRaw(5, 1, 0));  // in neither
}

// Tiles that share a sixth: only the stars of the overlap have counterparts.
TEST_F(MosaicTest, AlignsTilesWithinTheOverlap) {
  COrbImage first = SkyImage(300, 240, 500.0, 2.0, 1);
  COrbImage second = SkyImage(300, 240, 500.0, 2.0, 2);
  FrameTransform const transform{250.25, -11.5, 0.3, 149.5, 119.5};
  RigidMap const map(transform);
  std::uniform_real_distribution<double> bright(100.0, 2000.0);
  for (Position const& p : RandomPositions(3, 300, 560.0, 240.0)) {
    double const peak = bright(random);
    Position const at = map.ToFrame(p);
    if (p.x < 300.0) AddGaussian(first, p.x, p.y, peak, 3.0);
    if (at.x > -5.0) AddGaussian(second, at.x, at.y, peak, 3.0);
  }
  WriteFrame(folder / "a.fits", first);
  WriteFrame(folder / "b.fits", second);
  CommandResult const run = Run({"--align", "--start", "248", "-8", "--range", "20", "--json"});
  ASSERT_TRUE(Succeeds(run));
  Json const placed = Json::parse(run.out)["placement"];
  EXPECT_NEAR(250.25, placed["dx"].get<double>(), 0.3);
  EXPECT_NEAR(-11.5, placed["dy"].get<double>(), 0.3);
  EXPECT_NEAR(0.3, placed["angle"].get<double>(), 0.1);
  MosaicCanvas const canvas = host::FindCanvas(first, second, transform);
  COrbImage const result = ReadFrame(folder / "m.fits").image;
  EXPECT_NEAR(static_cast<double>(canvas.width), result.GetWidth(), 1.0);
  EXPECT_NEAR(static_cast<double>(canvas.height), result.GetHeight(), 1.0);
  EXPECT_TRUE(FailsInOneLine(Run({"--align", "-f"}), Exit::kFailed, {"b.fits", "a.fits", "--alignment"}));
}

TEST_F(MosaicTest, RefusesWhatCannotBe) {
  Write(1);
  COrbImage const colour = RandomImage(random, 30, 20, 3);
  WriteFrame(folder / "colour.fits", colour);
  EXPECT_TRUE(FailsInOneLine(Run({"--dx", "100000", "--memory", "1M"}), Exit::kResources, {"--memory", "100028"}));
  EXPECT_TRUE(FailsInOneLine(Run({"--dx", "100", "--match-levels"}), Exit::kFailed, {"--match-levels", "0 pixels"}));
  EXPECT_TRUE(FailsInOneLine(Run({"--dx", "1", "--align"}), Exit::kUsage, {"--dx", "--align"}));
  EXPECT_TRUE(FailsInOneLine(Run({"--mode", "brighter"}), Exit::kUsage, {"--mode", "lighter"}));
  EXPECT_TRUE(FailsInOneLine(Run({"--start", "1", "2"}), Exit::kUsage, {"--start", "--align"}));
  EXPECT_TRUE(FailsInOneLine(
      RunQuietly({"mosaic", folder / "a.fits", folder / "colour.fits", "--match-levels", "-o", folder / "m.fits"}),
      Exit::kUsage, {"--match-levels", "colour.fits"}));
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"mosaic", folder / "a.fits", folder / "none.fits", "-o", folder / "m.fits"}),
                             Exit::kInput, {"none.fits"}));
  EXPECT_FALSE(std::filesystem::exists(folder / "m.fits"));
}

// A mono tile beside a colour one gives a colour canvas, on which it is gray.
TEST_F(MosaicTest, AColourTileMakesAColourCanvas) {
  COrbImage colour = RandomImage(random, 10, 10, 3);
  WriteConstant(folder / "a.fits", 10, 10, 7.0f);
  WriteFrame(folder / "b.fits", colour);
  ASSERT_TRUE(Succeeds(Run({"--dx", "10"})));
  COrbImage result = ReadFrame(folder / "m.fits").image;
  ASSERT_EQ(3, result.GetPlanes());
  ASSERT_EQ(20, result.GetWidth());
  for (int p = 0; p < 3; ++p) {
    EXPECT_EQ(7.0f, result.GetPixelGrayRaw(3, 3, p));
    EXPECT_EQ(colour.GetPixelGrayRaw(2, 5, p), result.GetPixelGrayRaw(12, 5, p));
  }
}

// Two tiles of a nebula, 37 common stars by other means: (x + 427.43, y - 18.47) with y downwards, to 0.18 pixel.
TEST(RealFrames, TilesOfM17LieAsMeasured) {
  std::string const folder = SamplePath("mosaic_m17/m17_K_");
  if (folder.empty()) GTEST_SKIP() << "ORBIMG_SAMPLES is not set: no real frames";
  ScratchFolder scratch;
  CommandResult const run =
      RunQuietly({"mosaic", folder + "left.fits", folder + "right.fits", "--align", "--start", "427", "-18", "--range",
                  "20", "--match-levels", "--json", "-o", scratch / "m.fits"});
  ASSERT_TRUE(Succeeds(run));
  host::Frame const result = ReadFrame(scratch / "m.fits");
  EXPECT_EQ(928, result.image.GetWidth());
  EXPECT_EQ(642, result.image.GetHeight());
  Json const found = Json::parse(run.out);
  EXPECT_NEAR(-2.8, found["added"][0].get<double>(), 0.4);
  // Where the middle of the overlap lies in the right tile.
  Json const& placed = found["placement"];
  FrameTransform const transform{placed["dx"], placed["dy"], placed["angle"], placed["centre"][0], placed["centre"][1]};
  Position const at = RigidMap(transform).ToFrame({463.0, 311.5});
  EXPECT_NEAR(463.0 - 427.43, at.x, 0.2);
  EXPECT_NEAR(311.5 + 18.47, at.y, 0.2);
}

}  // namespace
}  // namespace orb::test
