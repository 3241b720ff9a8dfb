// orbimg calibrate against the library's calibration.
#include <algorithm>
#include <vector>

#include <gtest/gtest.h>
#include <tests/command/command_support.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

using host::Exit;

class CalibrateTest : public testing::Test {
 protected:
  COrbImage Make(std::string const& name, double low, double high, int planes = 1) {
    COrbImage image(-32, 31, 23, planes, 1.0, 0.0, 1, nullptr, nullptr);
    FillRandom(image, random, low, high);
    WriteFrame(folder / (name + ".fits"), image);
    return image;
  }

  // The upper median of images as they lie.
  static COrbImage MedianOf(std::vector<COrbImage> const& images) {
    COrbImage result(images[0]);
    std::vector<std::vector<float>> samples;
    for (COrbImage const& image : images) samples.push_back(SamplesOf(image));
    std::vector<float> median(samples[0].size());
    for (std::size_t k = 0; k < median.size(); ++k) {
      std::vector<float> values;
      for (auto const& of : samples) values.push_back(of[k]);
      std::sort(values.begin(), values.end());
      median[k] = values[values.size() / 2];
    }
    SetSamples(result, median);
    return result;
  }

  static double UpperMedian(COrbImage const& image) {
    std::vector<float> samples = SamplesOf(image);
    std::sort(samples.begin(), samples.end());
    return samples[samples.size() / 2];
  }

  static void Scale(COrbImage& image, double factor) {
    std::vector<float> samples = SamplesOf(image);
    for (float& v : samples) v = static_cast<float>(v * factor);
    SetSamples(image, samples);
  }

  void Calibrate(std::vector<std::string> const& more) {
    std::vector<std::string> arguments{"calibrate", folder / "light*.fits", "-o", folder / "out"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    ASSERT_TRUE(Succeeds(RunQuietly(arguments)));
  }

  host::Frame Result(std::string const& name) { return ReadFrame(folder / ("out/" + name + ".fits")); }

  Random random{3};
  ScratchFolder folder;
};

TEST_F(CalibrateTest, OneDarkIsSubtractedAndHeldAtZero) {
  COrbImage light = Make("light1", 0.0, 100.0);
  COrbImage dark = Make("dark", 0.0, 90.0);
  Calibrate({"--dark", folder / "dark.fits"});
  light.DarkClbrtn(&dark, 0);
  EXPECT_TRUE(SameBits(light, Result("light1").image));
}

TEST_F(CalibrateTest, ManyDarksBecomeTheirPixelMedian) {
  COrbImage light = Make("light1", 100.0, 200.0);
  std::vector<COrbImage> darks;
  for (int i = 0; i < 4; ++i) darks.push_back(Make("dark" + std::to_string(i), 0.0, 50.0));
  Calibrate({"--dark", folder / "dark*.fits", "--save-dark", folder / "master.fits"});
  COrbImage median = MedianOf(darks);
  EXPECT_TRUE(SameBits(median, ReadFrame(folder / "master.fits").image));
  light.DarkClbrtn(&median, 0);
  EXPECT_TRUE(SameBits(light, Result("light1").image));
}

TEST_F(CalibrateTest, OneFlatLessItsDark) {
  COrbImage light = Make("light1", 100.0, 200.0);
  COrbImage dark = Make("dark", 0.0, 50.0);
  COrbImage flat = Make("flat", 900.0, 1100.0);
  COrbImage flatDark = Make("fdark", 0.0, 50.0);
  Calibrate({"--dark", folder / "dark.fits", "--flat", folder / "flat.fits", "--flat-dark", folder / "fdark.fits"});
  light.DarkClbrtn(&dark, 0);
  flat.DarkClbrtn(&flatDark, 0);
  light.FlatClbrtn(&flat, 0);
  EXPECT_TRUE(SameBits(light, Result("light1").image));
}

TEST_F(CalibrateTest, ManyFlatsAreBroughtToOneBrightnessFirst) {
  COrbImage light = Make("light1", 100.0, 200.0);
  std::vector<COrbImage> flats;
  for (int i = 0; i < 3; ++i) flats.push_back(Make("flat" + std::to_string(i), 900.0 * (i + 1), 1100.0 * (i + 1)));
  double const first = UpperMedian(flats[0]);
  for (COrbImage& flat : flats) Scale(flat, first / UpperMedian(flat));
  COrbImage median = MedianOf(flats);
  Calibrate({"--flat", folder / "flat*.fits", "--save-flat", folder / "master.fits"});
  EXPECT_TRUE(SameBits(median, ReadFrame(folder / "master.fits").image));
  light.FlatClbrtn(&median, 0);
  EXPECT_TRUE(SameBits(light, Result("light1").image));
}

TEST_F(CalibrateTest, SkyFlatIsTheMedianOfTheLightsLessTheDark) {
  COrbImage dark = Make("dark", 0.0, 50.0);
  std::vector<COrbImage> lights;
  for (int i = 0; i < 5; ++i) lights.push_back(Make("light" + std::to_string(i), 200.0 + 100.0 * i, 300.0 + 100.0 * i));
  std::vector<COrbImage> skies(lights);
  for (COrbImage& sky : skies) sky.DarkClbrtn(&dark, 0);
  double const first = UpperMedian(skies[0]);
  for (COrbImage& sky : skies) Scale(sky, first / UpperMedian(sky));
  COrbImage flat = MedianOf(skies);
  Calibrate({"--dark", folder / "dark.fits", "--sky-flat", "--threads", "2", "--memory", "40K"});
  for (std::size_t i = 0; i < lights.size(); ++i) {
    lights[i].DarkClbrtn(&dark, 0);
    lights[i].FlatClbrtn(&flat, 0);
    EXPECT_TRUE(SameBits(lights[i], Result("light" + std::to_string(i)).image)) << i;
  }
}

TEST_F(CalibrateTest, AMonoDarkServesAColourLight) {
  COrbImage light = Make("light1", 100.0, 200.0, 3);
  COrbImage dark = Make("dark", 0.0, 50.0, 1);
  Calibrate({"--dark", folder / "dark.fits"});
  light.DarkClbrtn(&dark, 0);
  EXPECT_TRUE(SameBits(light, Result("light1").image));
}

TEST_F(CalibrateTest, CardsAreCarriedOnAndHistoryTellsWhatWasDone) {
  host::FitsHeader header;
  header.SetText("OBJECT", "M 57", "");
  COrbImage light(-32, 31, 23, 1, 1.0, 0.0, 1, nullptr, nullptr);
  FillRandom(light, random, 100.0, 200.0);
  WriteFrame(folder / "light1.fits", light, header);
  Make("dark", 0.0, 50.0);
  Calibrate({"--dark", folder / "dark.fits"});
  host::Frame const result = Result("light1");
  EXPECT_EQ(result.header.Text("OBJECT"), "M 57");
  EXPECT_TRUE(std::any_of(result.header.cards.begin(), result.header.cards.end(), [](std::string const& card) {
    return card.starts_with("HISTORY") && card.find("DarkClbrtn, dark dark.fits") != std::string::npos;
  }));
}

TEST_F(CalibrateTest, LightsOfOneNameWouldOverwriteEachOther) {
  Make("light1", 100.0, 200.0);
  Make("dark", 0.0, 50.0);
  CommandResult const result = RunQuietly({"calibrate", folder / "light1.fits", folder / "./light1.fits", "--dark",
                                           folder / "dark.fits", "-o", folder / "out"});
  EXPECT_TRUE(FailsInOneLine(result, Exit::kUsage, {"same file", "different folders"}));
}

TEST_F(CalibrateTest, NothingToCalibrateWithIsWrongUse) {
  Make("light1", 100.0, 200.0);
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"calibrate", folder / "light1.fits", "-o", folder / "out"}), Exit::kUsage,
                             {"--dark", "--flat", "--sky-flat"}));
}

TEST_F(CalibrateTest, WhatIsNotThereCannotBeSaved) {
  Make("light1", 100.0, 200.0);
  Make("dark", 0.0, 50.0);
  std::vector<std::string> const arguments{"calibrate", folder / "light1.fits", "-o", folder / "out"};
  std::vector<std::string> flat(arguments);
  flat.insert(flat.end(), {"--dark", folder / "dark.fits", "--save-flat", folder / "f.fits"});
  EXPECT_TRUE(FailsInOneLine(RunQuietly(flat), Exit::kUsage, {"--save-flat", "--sky-flat"}));
  std::vector<std::string> dark(arguments);
  dark.insert(dark.end(), {"--flat", folder / "dark.fits", "--save-dark", folder / "d.fits"});
  EXPECT_TRUE(FailsInOneLine(RunQuietly(dark), Exit::kUsage, {"--save-dark", "--dark"}));
}

TEST_F(CalibrateTest, ASkyFlatOfTwoLightsIsRefused) {
  Make("light1", 100.0, 200.0);
  Make("light2", 100.0, 200.0);
  EXPECT_TRUE(FailsInOneLine(RunQuietly({"calibrate", folder / "light*.fits", "--sky-flat", "-o", folder / "out"}),
                             Exit::kUsage, {"--sky-flat", "at least 3"}));
}

TEST_F(CalibrateTest, AFlatWithoutLightIsRefused) {
  Make("light1", 100.0, 200.0);
  WriteConstant(folder / "flat.fits", 31, 23, 0.0f);
  EXPECT_TRUE(FailsInOneLine(
      RunQuietly({"calibrate", folder / "light1.fits", "--flat", folder / "flat.fits", "-o", folder / "out"}),
      Exit::kFailed, {"flat.fits", "no light"}));
}

TEST_F(CalibrateTest, ExistingFramesAreKeptWithoutForce) {
  Make("light1", 100.0, 200.0);
  Make("dark", 0.0, 50.0);
  Calibrate({"--dark", folder / "dark.fits"});
  std::vector<std::string> arguments{"calibrate", folder / "light1.fits", "--dark", folder / "dark.fits",
                                     "-o",        folder / "out"};
  EXPECT_TRUE(FailsInOneLine(RunQuietly(arguments), Exit::kOutput, {"light1.fits", "--force"}));
  arguments.emplace_back("--force");
  EXPECT_TRUE(Succeeds(RunQuietly(arguments)));
}

}  // namespace
}  // namespace orb::test
