// orbimg plot: what is counted and sampled, and that it is drawn.
#include <cmath>
#include <filesystem>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/io/picture_file.h>
#include <hosts/orbimg/plot.h>
#include <tests/command/command_support.h>
#include <tests/support/fonts.h>
#include <tests/support/test_images.h>
#include <nlohmann/json.hpp>

namespace orb::test {
namespace {

using host::Exit;
using Json = nlohmann::json;

class PlotTest : public testing::Test {
 protected:
  void SetUp() override { SKIP_WITHOUT_FONTS(); }

  Json Run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "plot");
    arguments.insert(arguments.end(), {"-o", folder / "p.png", "-f", "--json"});
    CommandResult const result = RunQuietly(arguments);
    EXPECT_TRUE(Succeeds(result));
    return Json::parse(result.out, nullptr, false);
  }

  // Pixels of the picture that have just this colour.
  int Count(double red, double green, double blue) {
    COrbImage picture;
    host::ReadPng(folder / "p.png", picture);
    int count = 0;
    for (int y = 0; y < picture.GetHeight(); ++y) {
      for (int x = 0; x < picture.GetWidth(); ++x) {
        count += picture.GetPixelGrayRaw(x, y, 0) == red && picture.GetPixelGrayRaw(x, y, 1) == green &&
                         picture.GetPixelGrayRaw(x, y, 2) == blue
                     ? 1
                     : 0;
      }
    }
    return count;
  }

  void WriteSamples(int width, int height, int planes, std::vector<float> const& samples) {
    COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
    SetSamples(image, samples);
    std::filesystem::remove(folder / "a.fits");
    WriteFrame(folder / "a.fits", image);
  }

  ScratchFolder folder;
};

TEST(PlotTicks, AreRoundNumbersWithinTheRange) {
  EXPECT_EQ((std::vector<double>{0, 20, 40, 60, 80, 100}), host::FindTicks(0.0, 100.0, 6));
  EXPECT_EQ((std::vector<double>{-1, 0, 1, 2}), host::FindTicks(-1.4, 2.9, 4));
  EXPECT_EQ((std::vector<double>{1000, 1500, 2000}), host::FindTicks(999.0, 2001.0, 2));
  EXPECT_TRUE(host::FindTicks(1.0, 1.0, 5).empty());
  EXPECT_TRUE(host::FindTicks(0.0, INFINITY, 5).empty());
}

TEST_F(PlotTest, HistogramCountsEveryFiniteSampleOnce) {
  WriteSamples(4, 2, 1, {0.0f, 1.0f, 1.5f, 2.0f, 3.999f, 4.0f, NAN, INFINITY});
  Json const plot = Run({"histogram", folder / "a.fits", "--bins", "4"});
  Json const series = plot["series"];
  ASSERT_EQ(1u, series.size());
  EXPECT_EQ((std::vector<double>{0.5, 1.5, 2.5, 3.5}), series[0]["x"].get<std::vector<double>>());
  EXPECT_EQ((std::vector<double>{1, 2, 1, 2}), series[0]["y"].get<std::vector<double>>());
  EXPECT_GT(Count(30, 30, 30), 100);
  COrbImage picture;
  host::ReadPng(folder / "p.png", picture);
  EXPECT_EQ(960, picture.GetWidth());
  EXPECT_EQ(600, picture.GetHeight());
  EXPECT_EQ(255.0f, picture.GetPixelGrayRaw(2, 2, 0));
}

TEST_F(PlotTest, HistogramOfColourInARangeOfItsOwn) {
  WriteSamples(2, 1, 3, {5.0f, 6.0f, 5.0f, 100.0f, -1.0f, 7.5f});
  Json const plot =
      Run({"histogram", folder / "a.fits", "--bins", "2", "--range", "5", "7.5", "--log", "--size", "400", "300"});
  ASSERT_EQ(3u, plot["series"].size());
  EXPECT_EQ((std::vector<double>{2, 0}), plot["series"][0]["y"].get<std::vector<double>>());
  EXPECT_EQ((std::vector<double>{1, 0}), plot["series"][1]["y"].get<std::vector<double>>());
  EXPECT_EQ((std::vector<double>{0, 1}), plot["series"][2]["y"].get<std::vector<double>>());
  EXPECT_GT(Count(205, 30, 30), 50);
}

TEST_F(PlotTest, ProfileTakesWhatLiesOnTheLine) {
  WriteSamples(4, 3, 1, {0, 1, 2, 3, 10, 11, 12, 13, 20, 21, 22, 23});
  Json const row = Run({"profile", folder / "a.fits", "--from", "0", "1", "--to", "3", "1"})["series"][0];
  EXPECT_EQ((std::vector<double>{0, 1, 2, 3}), row["x"].get<std::vector<double>>());
  EXPECT_EQ((std::vector<double>{10, 11, 12, 13}), row["y"].get<std::vector<double>>());
  Json const between = Run({"profile", folder / "a.fits", "--from", "2.5", "0.5", "--to", "2.5", "1.5"})["series"][0];
  EXPECT_EQ((std::vector<double>{7.5, 17.5}), between["y"].get<std::vector<double>>());
  EXPECT_GT(Count(30, 30, 30), 100);
}

TEST_F(PlotTest, CurveIsWhatApplyTakes) {
  WriteText(folder / "points.txt", "0 0.25\n1 0.75\n");
  Json const curve = Run({"curve", "--curve", folder / "points.txt"})["series"];
  ASSERT_EQ(1u, curve.size());
  EXPECT_EQ(513u, curve[0]["y"].size());
  EXPECT_EQ(0.25, curve[0]["y"][0]);
  EXPECT_EQ(0.5, curve[0]["y"][256]);
  EXPECT_EQ(0.75, curve[0]["y"][512]);
}

TEST_F(PlotTest, RefusesWhatCannotBeDrawn) {
  WriteSamples(4, 3, 1, std::vector<float>(12, 1.0f));
  std::string const a = folder / "a.fits";
  std::string const out = folder / "p.png";
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"plot", "profile", a, "--from", "0", "0", "--to", "4", "0", "-o", out}),
                             Exit::kUsage, {"--to", "from 0 to 3"}));
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"plot", "histogram", a, "--range", "5", "5", "-o", out}), Exit::kUsage,
                             {"--range", "lower end first"}));
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"plot", "histogram", a, "-o", folder / "p.tif"}), Exit::kUsage, {".png"}));
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"plot", "curve", "-o", out}), Exit::kUsage, {"curve"}));
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"plot"}), Exit::kUsage, {"plot"}));
}

TEST_F(PlotTest, EvenImagesAndSinglePixelsAreDrawn) {
  WriteSamples(1, 1, 1, {7.0f});
  EXPECT_EQ(1.0, Run({"histogram", folder / "a.fits", "--bins", "1"})["series"][0]["y"][0]);
  EXPECT_EQ(7.0, Run({"profile", folder / "a.fits", "--from", "0", "0", "--to", "0", "0"})["series"][0]["y"][0]);
}

}  // namespace
}  // namespace orb::test
