// orbimg level, render, info and stars.
#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/io/picture_file.h>
#include <tests/command/command_support.h>
#include <tests/support/test_images.h>
#include <nlohmann/json.hpp>

namespace orb::test {
namespace {

using host::Exit;
using Json = nlohmann::json;

class PictureTest : public testing::Test {
 protected:
  COrbImage Make(std::string const& name, int planes) {
    COrbImage image(-32, 40, 30, planes, 1.0, 0.0, 1, nullptr, nullptr);
    FillRandom(image, random, 100.0, 1000.0);
    WriteFrame(folder / name, image);
    return image;
  }

  // Runs `level` and compares samples and levels with what `set` does to the image.
  template <typename Set>
  void ExpectLevels(int planes, std::vector<std::string> const& more, Set set) {
    COrbImage const image = Make("in.fits", planes);
    CImgAutoLevel expected;
    expected.CopyImage(ReadFrame(folder / "in.fits").image, nullptr, nullptr);
    set(expected);
    std::vector<std::string> arguments{"level", folder / "in.fits", "-o", folder / "out.fits"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    ASSERT_TRUE(Succeeds(RunQuietly(arguments)));
    host::Frame const result = ReadFrame(folder / "out.fits");
    EXPECT_TRUE(SameBits(image, result.image));
    EXPECT_TRUE(SameLevels(expected, result.image));
  }

  Random random{8};
  ScratchFolder folder;
};

TEST_F(PictureTest, LevelByArea) {
  ExpectLevels(1, {"--area", "0.01", "0.99"}, [](CImgAutoLevel& image) { image.Do(0.01, 0.99, 0, nullptr); });
}

TEST_F(PictureTest, LevelByAreaOfABrightness) {
  ExpectLevels(3, {"--area", "0.01", "0.99"}, [](CImgAutoLevel& image) { image.Do(0.01, 0.99, 0, nullptr); });
}

TEST_F(PictureTest, LevelByMeanOfEachPlane) {
  ExpectLevels(3, {"--mean", "1", "2.5", "--per-plane"},
               [](CImgAutoLevel& image) { image.DoByMean(1, 2.5, 1, nullptr); });
}

TEST_F(PictureTest, LevelByMedianInARectangle) {
  ExpectLevels(1, {"--median", "1", "2", "--rect", "3", "4", "30", "25"}, [](CImgAutoLevel& image) {
    CRect rect(3, 4, 30, 25);
    image.DoByMedian(1, 2, 0, &rect, 0.0);
  });
}

TEST_F(PictureTest, LevelOfAFixedRange) {
  ExpectLevels(1, {"--fixed", "250"}, [](CImgAutoLevel& image) { image.DoByMedian(0, 0, 0, nullptr, 250.0); });
}

TEST_F(PictureTest, LevelAsGivenNegativesToo) {
  ExpectLevels(3, {"--set", "-5.5", "900"}, [](CImgAutoLevel& image) {
    for (int p = 0; p < 3; ++p) image.CImage::SetLevel(p, -5.5, 900.0);
  });
}

TEST_F(PictureTest, LevelPrintsWhatItSet) {
  Make("in.fits", 1);
  CommandResult const result =
      RunQuietly({"level", folder / "in.fits", "--set", "100", "900", "-o", folder / "out.fits", "--json"});
  ASSERT_TRUE(Succeeds(result));
  Json const levels = Json::parse(result.out);
  EXPECT_EQ(levels["levels"][0]["black"], 100.0);
  EXPECT_EQ(levels["levels"][0]["white"], 900.0);
}

TEST_F(PictureTest, LevelReplacesItsOwnInputWithForce) {
  COrbImage const image = Make("in.fits", 1);
  ASSERT_TRUE(Succeeds(RunQuietly({"level", folder / "in.fits", "--set", "1", "2", "-o", folder / "in.fits", "-f"})));
  EXPECT_TRUE(SameBits(image, ReadFrame(folder / "in.fits").image));
}

TEST_F(PictureTest, LevelRefusesWhatShowsNothing) {
  Make("in.fits", 1);
  Make("colour.fits", 3);
  WriteConstant(folder / "even.fits", 9, 9, 5.0f);
  std::string const out = folder / "out.fits";
  auto const run = [&](std::string const& file, std::vector<std::string> more) {
    more.insert(more.begin(), {"level", folder / file, "-o", out});
    return RunQuietly(more);
  };
  EXPECT_TRUE(FailsInOneLine(run("in.fits", {"--set", "9", "5"}), Exit::kUsage, {"--set", "black first"}));
  EXPECT_TRUE(FailsInOneLine(run("in.fits", {"--fixed", "-3"}), Exit::kUsage, {"--fixed", "above 0"}));
  EXPECT_TRUE(FailsInOneLine(run("colour.fits", {"--fixed", "3"}), Exit::kUsage, {"--fixed", "--median"}));
  EXPECT_TRUE(FailsInOneLine(run("even.fits", {"--area", "0.1", "0.9"}), Exit::kFailed, {"even.fits", "--set"}));
  EXPECT_TRUE(FailsInOneLine(run("in.fits", {"--area", "0.1", "0.9", "--rect", "0", "0", "41", "30"}), Exit::kUsage,
                             {"--rect", "40 x 30"}));
  EXPECT_TRUE(FailsInOneLine(run("in.fits", {}), Exit::kUsage, {"level"}));
  EXPECT_TRUE(FailsInOneLine(run("in.fits", {"--area", "0", "1", "--set", "1", "2"}), Exit::kUsage, {"level"}));
}

TEST_F(PictureTest, LevelCannotMeasureWhatIsNoNumber) {
  COrbImage image = Make("in.fits", 1);
  image.SetPixelGrayRaw(3, 3, NAN, 0);
  WriteFrame(folder / "nan.fits", image);
  EXPECT_TRUE(
      FailsInOneLine(RunQuietly({"level", folder / "nan.fits", "--median", "1", "1", "-o", folder / "out.fits"}),
                     Exit::kFailed, {"nan.fits", "1 samples are not finite", "--set"}));
  EXPECT_TRUE(Succeeds(RunQuietly({"level", folder / "nan.fits", "--set", "1", "2", "-o", folder / "out.fits"})));
}

TEST_F(PictureTest, RenderWritesWhatTheLibraryRenders) {
  COrbImage image = Make("in.fits", 3);
  ASSERT_TRUE(Succeeds(RunQuietly({"level", folder / "in.fits", "--set", "200", "800", "-o", folder / "l.fits"})));
  ASSERT_TRUE(Succeeds(RunQuietly({"render", folder / "l.fits", "-o", folder / "p.png"})));
  for (int p = 0; p < 3; ++p) image.CImage::SetLevel(p, 200.0, 800.0);
  COrbImage picture;
  host::ReadPng(folder / "p.png", picture);
  ASSERT_EQ(picture.GetWidth(), 40);
  ASSERT_EQ(picture.GetPlanes(), 3);
  for (int p = 0; p < 3; ++p) {
    for (int y = 0; y < 30; ++y) {
      for (int x = 0; x < 40; ++x) ASSERT_EQ(picture.GetPixelGrayRaw(x, y, p), image.GetPixelGray256(x, y, p));
    }
  }
}

TEST_F(PictureTest, RenderIn8BitsAndAsBmp) {
  Make("in.fits", 1);
  ASSERT_TRUE(Succeeds(RunQuietly({"render", folder / "in.fits", "--bits", "8", "-o", folder / "p.bmp"})));
  std::string const bmp = ReadText(folder / "p.bmp");
  EXPECT_TRUE(bmp.starts_with("BM"));
  EXPECT_EQ(bmp.size(), 14u + 40u + 1024u + 40u * 30u);
  ASSERT_TRUE(Succeeds(RunQuietly({"render", folder / "in.fits", "--bits", "24", "-o", folder / "q.bmp"})));
  EXPECT_EQ(ReadText(folder / "q.bmp").size(), 14u + 40u + 120u * 30u);
}

TEST_F(PictureTest, RenderRefusesOtherDepthsAndEndings) {
  Make("in.fits", 1);
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"render", folder / "in.fits", "--bits", "16", "-o", folder / "p.png"}),
                             Exit::kUsage, {"--bits"}));
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"render", folder / "in.fits", "-o", folder / "p.jpg"}), Exit::kUsage,
                             {"p.jpg", ".png or .bmp"}));
}

TEST_F(PictureTest, InfoMeasures) {
  COrbImage image(-32, 3, 2, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, {1.0f, 2.0f, 3.0f, 4.0f, 6.0f, NAN});
  host::FitsHeader header;
  header.SetText("OBJECT", "M 1", "");
  header.SetNumber("EXPTIME", 30.0, "");
  WriteFrame(folder / "a.fits", image, header);
  CommandResult const result = RunLoudly({"info", "--json", folder / "a.fits"});
  ASSERT_TRUE(Succeeds(result));
  Json const info = Json::parse(result.out)[0];
  EXPECT_EQ(info["width"], 3);
  EXPECT_EQ(info["height"], 2);
  Json const plane = info["planes"][0];
  EXPECT_EQ(plane["min"], 1.0);
  EXPECT_EQ(plane["max"], 6.0);
  EXPECT_EQ(plane["mean"], 3.2);
  EXPECT_EQ(plane["median"], 3.0);
  EXPECT_NEAR(plane["deviation"].get<double>(), std::sqrt(2.96), 1e-12);
  EXPECT_EQ(plane["non_finite"], 1);
  EXPECT_EQ(info["cards"]["OBJECT"], "M 1");
  EXPECT_EQ(info["cards"]["EXPTIME"], "30.0");
}

TEST_F(PictureTest, InfoIsReadableAndInNaturalOrder) {
  WriteConstant(folder / "f10.fits", 4, 4, 1.0f);
  WriteConstant(folder / "f9.fits", 4, 4, 1.0f);
  CommandResult const result = RunLoudly({"info", folder / "f10.fits", folder / "f9.fits"});
  ASSERT_TRUE(Succeeds(result));
  EXPECT_LT(result.out.find("f9.fits"), result.out.find("f10.fits"));
  EXPECT_NE(result.out.find("4 x 4"), std::string::npos);
}

TEST_F(PictureTest, StarsAreFoundWhereTheyAre) {
  COrbImage image(-32, 80, 70, 1, 1.0, 0.0, 1, nullptr, nullptr);
  std::normal_distribution<float> noise(100.0f, 1.0f);
  for (int y = 0; y < 70; ++y) {
    for (int x = 0; x < 80; ++x) {
      double const r2 = (x - 40.25) * (x - 40.25) + (y - 30.5) * (y - 30.5);
      image.SetPixelGrayRaw(x, y, noise(random) + static_cast<float>(500.0 * std::exp(-r2 / 4.0)), 0);
    }
  }
  WriteFrame(folder / "a.fits", image);
  CommandResult const result = RunLoudly({"stars", "--json", folder / "a.fits", "--max", "1"});
  ASSERT_TRUE(Succeeds(result));
  Json const stars = Json::parse(result.out)[0]["stars"];
  ASSERT_EQ(stars.size(), 1u);
  EXPECT_NEAR(stars[0]["x"].get<double>(), 40.25, 0.1);
  EXPECT_NEAR(stars[0]["y"].get<double>(), 30.5, 0.1);
  EXPECT_GT(stars[0]["peak"].get<double>(), 400.0);
  EXPECT_NEAR(stars[0]["flux"].get<double>(), 500.0 * 4.0 * 3.14159, 250.0);
  CommandResult const table = RunLoudly({"stars", folder / "a.fits"});
  EXPECT_NE(table.out.find("1 stars"), std::string::npos) << table.out;
}

}  // namespace
}  // namespace orb::test
