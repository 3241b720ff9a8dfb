// orbimg sky: from files to files.
#include <string>

#include <gtest/gtest.h>
#include <tests/command/command_support.h>
#include <tests/sky/sky_image.h>
#include <nlohmann/json.hpp>

namespace orb::test {
namespace {

using host::Exit;
using Json = nlohmann::json;

class SkyCommandTest : public testing::Test {
 protected:
  void SetUp() override {
    COrbImage sky = NoisySky(random, 90, 70, 1);
    AddStar(sky, 10, 10);
    WriteFrame(file, sky);
  }

  CommandResult Sky(std::vector<std::string> words) {
    words.insert(words.begin(), "sky");
    return RunQuietly(words);
  }

  Random random{5};
  ScratchFolder folder;
  std::string file = folder / "sky.fits";
  std::string other = folder / "other.fits";
  std::string out = folder / "out.fits";
};

TEST_F(SkyCommandTest, SelectPrintsTheTileAndWritesNothing) {
  CommandResult const result = Sky({"select", file, "--size", "32", "--share", "1.3", "--json"});
  ASSERT_TRUE(Succeeds(result));
  Json const found = Json::parse(result.out)["results"];
  EXPECT_EQ(32, found["left"]);
  EXPECT_EQ(0, found["top"]);
  EXPECT_EQ(64, found["right"]);
  EXPECT_EQ(32, found["bottom"]);
  EXPECT_NEAR(1000.0, found["level"], 1.0);
  EXPECT_NEAR(2.0, found["deviation"], 0.2);
  EXPECT_EQ(Exit::kUsage, Sky({"select", file, "-o", out}).status);
}

TEST_F(SkyCommandTest, SelectSaysWhereThereIsNoSuchTile) {
  CommandResult const result = Sky({"select", file, "--share", "0.1"});
  EXPECT_EQ(Exit::kFailed, result.status);
  EXPECT_NE(std::string::npos, result.err.find("finds no result in this image")) << result.err;
}

TEST_F(SkyCommandTest, ModelIsTheOperator) {
  ASSERT_TRUE(Succeeds(Sky({"model", file, "--size", "16", "-o", out})));
  host::Frame frame = ReadFrame(file);
  CImgSkyFlat expected;
  expected.CopyImage(frame.image, nullptr, nullptr);
  expected.Do(16, &frame.image, 0);
  EXPECT_TRUE(SameBits(expected, ReadFrame(out).image));
}

TEST_F(SkyCommandTest, ModelOfAColourImageIsRefused) {
  WriteFrame(other, NoisySky(random, 40, 40, 3));
  CommandResult const result = Sky({"model", other, "-o", out});
  EXPECT_EQ(Exit::kUsage, result.status);
  EXPECT_NE(std::string::npos, result.err.find("has 3 planes; it must have 1")) << result.err;
}

TEST_F(SkyCommandTest, FlatReachesItsShareInTheCornerFromTheMiddle) {
  WriteFrame(other, ConstantSky(91, 71, 1, 800.0f));
  ASSERT_TRUE(Succeeds(Sky({"flat", other, "--corner", "0.5", "-o", out})));
  COrbImage image = ReadFrame(out).image;
  EXPECT_EQ(800.0f, image.GetPixelGrayRaw(45, 35, 0));
  for (int x : {0, 90}) EXPECT_NEAR(1600.0f, image.GetPixelGrayRaw(x, 70, 0), 1e-3);
}

TEST_F(SkyCommandTest, RampIsTakenOff) {
  ASSERT_TRUE(Succeeds(Sky({"ramp", file, "--slope", "0.5", "-o", out})));
  COrbImage before = ReadFrame(file).image;
  COrbImage after = ReadFrame(out).image;
  EXPECT_EQ(before.GetPixelGrayRaw(80, 9, 0) - 40.0f, after.GetPixelGrayRaw(80, 9, 0));
}

TEST_F(SkyCommandTest, MaskBlanksTheStar) {
  std::string const mask = folder / "mask.fits";
  ASSERT_TRUE(Succeeds(Sky({"mask", file, "--threshold", "1500", "-o", mask})));
  COrbImage made = ReadFrame(mask).image;
  EXPECT_EQ(0.0f, made.GetPixelGrayRaw(10, 10, 0));
  EXPECT_EQ(1.0f, made.GetPixelGrayRaw(11, 10, 0));
  EXPECT_EQ(1.0, made.GetLevelMax(0));
  ASSERT_TRUE(Succeeds(Sky({"blank", file, "--second", mask, "-o", out})));
  COrbImage before = ReadFrame(file).image;
  COrbImage after = ReadFrame(out).image;
  EXPECT_EQ(0.0f, after.GetPixelGrayRaw(10, 10, 0));
  EXPECT_EQ(before.GetPixelGrayRaw(11, 10, 0), after.GetPixelGrayRaw(11, 10, 0));
}

// The mask turns about its middle: half a turn of a mask with its left half blank blanks the right half.
TEST_F(SkyCommandTest, AMaskIsTurnedAboutItsMiddle) {
  COrbImage image = ConstantSky(41, 41, 1, 7.0f);
  WriteFrame(other, image);
  for (int y = 0; y < 41; ++y) {
    for (int x = 0; x < 41; ++x) image.SetPixelGrayRaw(x, y, x < 20 ? 0.0f : 1.0f, 0);
  }
  std::string const mask = folder / "mask.fits";
  WriteFrame(mask, image);
  ASSERT_TRUE(Succeeds(Sky({"blank", other, "--second", mask, "--angle", "180", "-o", out})));
  COrbImage after = ReadFrame(out).image;
  EXPECT_EQ(7.0f, after.GetPixelGrayRaw(5, 20, 0));
  EXPECT_EQ(0.0f, after.GetPixelGrayRaw(35, 20, 0));
}

}  // namespace
}  // namespace orb::test
