// orbimg measure: stars, apertures, regions and the sky.
#include <cmath>
#include <limits>

#include <hosts/orbimg/star_measurement.h>
#include <tests/command/command_support.h>
#include <tests/command/synthetic_stars.h>
#include <tests/support/test_images.h>
#include <nlohmann/json.hpp>

namespace orb::test {
namespace {

using host::Exit;
using Json = nlohmann::json;

// Two stars of 3 pixels width, and a ring of light around (150, 50), on a sky of 1000 with noise 5.
COrbImage Field() {
  COrbImage image = SkyImage(200, 120, 1000.0, 5.0, 1);
  AddGaussian(image, 60.0, 40.0, 2000.0, 3.0);
  AddGaussian(image, 40.0, 90.0, 900.0, 3.0);
  for (int y = 0; y < 120; ++y) {
    for (int x = 0; x < 200; ++x) {
      double const off = (std::hypot(x - 150.0, y - 50.0) - 8.0) / 2.0;
      image.SetPixelGrayRaw(x, y, image.GetPixelGrayRaw(x, y, 0) + static_cast<float>(800.0 * std::exp(-off * off)), 0);
    }
  }
  return image;
}

Json MeasureJson(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "measure");
  arguments.push_back("--json");
  CommandResult const result = RunLoudly(arguments);
  EXPECT_TRUE(Succeeds(result));
  return Json::parse(result.out);
}

class Measure : public testing::Test {
 protected:
  void SetUp() override { WriteFrame(folder / "field.fits", Field()); }

  ScratchFolder folder;
};

TEST_F(Measure, StarsHaveWidthAndLight) {
  Json const found =
      MeasureJson({"stars", folder / "field.fits", "--at", "60", "40", "--at", "40.2", "89.7", "--reach", "16"})[0];
  EXPECT_EQ(2u, found["with_width"]);
  EXPECT_EQ(0, found["rings"]);
  ASSERT_EQ(2u, found["stars"].size());
  double const whole = 2.0 * 3.14159265 * (3.0 / 2.3548) * (3.0 / 2.3548);
  for (Json const& star : found["stars"]) {
    EXPECT_FALSE(star["ring"]);
    EXPECT_NEAR(3.0, star["width"].get<double>(), 0.15);
    EXPECT_GT(star["extent"], 4.0);
  }
  EXPECT_NEAR(2000.0 * whole, found["stars"][0]["net"].get<double>(), 0.02 * 2000.0 * whole);
  EXPECT_NEAR(900.0 * whole, found["stars"][1]["net"].get<double>(), 0.04 * 900.0 * whole);
  double const mean = (found["stars"][0]["width"].get<double>() + found["stars"][1]["width"].get<double>()) / 2.0;
  EXPECT_NEAR(mean, found["mean_width"].get<double>(), 0.01);
}

TEST_F(Measure, ARingIsToldFromAStar) {
  Json const star = MeasureJson({"stars", folder / "field.fits", "--at", "150", "50", "--reach", "16"})[0]["stars"][0];
  EXPECT_TRUE(star["ring"]);
  EXPECT_TRUE(star["width"].is_null());
  EXPECT_NEAR(8.2, star["spread"].get<double>(), 0.4);
  CommandResult const table = RunLoudly({"measure", "stars", folder / "field.fits", "--at", "150", "50"});
  EXPECT_NE(table.out.find("ring"), std::string::npos) << table.out;
}

TEST_F(Measure, FindsTheStarsWhereNoneAreGiven) {
  CommandResult const table = RunLoudly({"stars", "--json", folder / "field.fits"});
  Json const stars = Json::parse(table.out)[0]["stars"];
  int seen = 0;  // the ring has maxima of its own
  for (Json const& star : stars) {
    if (std::hypot(star["x"].get<double>() - 60.0, star["y"].get<double>() - 40.0) > 0.5) continue;
    EXPECT_NEAR(3.0, star["width"].get<double>(), 0.15);
    ++seen;
  }
  EXPECT_EQ(1, seen);
  Json const found = MeasureJson({"stars", folder / "field.fits"})[0]["stars"];
  ASSERT_EQ(stars.size(), found.size());
  EXPECT_EQ(stars[0]["x"], found[0]["x"]);
}

TEST_F(Measure, AperturesTakeTheSkyOfTheirRing) {
  COrbImage image = SkyImage(40, 40, 0.0, 0.0, 1);
  for (int y = 0; y < 40; ++y) {
    for (int x = 0; x < 40; ++x) image.SetPixelGrayRaw(x, y, 0.25f, 0);
  }
  image.SetPixelGrayRaw(20, 20, 100.25f, 0);
  image.SetPixelGrayRaw(20, 31, 1000.0f, 0);  // in the ring
  WriteFrame(folder / "point.fits", image);
  Json const clipped =
      MeasureJson({"aperture", folder / "point.fits", "--at", "20", "20", "--disk", "3", "--ring", "10", "12"});
  Json const& one = clipped[0]["apertures"][0];
  EXPECT_EQ(37, one["pixels"]);
  EXPECT_EQ(100.0 + 37 * 0.25, one["sum"]);
  EXPECT_EQ(0.25, one["sky"]);
  EXPECT_EQ(100.0, one["net"]);
  Json const mean = MeasureJson({"aperture", folder / "point.fits", "--at", "20", "20", "--disk", "3", "--ring", "10",
                                 "12", "--sky", "mean"})[0]["apertures"][0];
  double const sky = 0.25 + 999.75 / mean["sky_pixels"].get<double>();
  EXPECT_NEAR(sky, mean["sky"].get<double>(), 1e-9);
  EXPECT_NEAR(100.0 + 37 * (0.25 - sky), mean["net"].get<double>(), 1e-7);
}

TEST_F(Measure, SmallSamplesAreSummedAsTheyAre) {
  COrbImage image = SkyImage(30, 30, 0.0, 0.0, 1);
  for (int y = 0; y < 30; ++y) {
    for (int x = 0; x < 30; ++x) image.SetPixelGrayRaw(x, y, 1e-6f * static_cast<float>(x == 15 && y == 15 ? 7 : 1), 0);
  }
  host::ApertureCounter counter(image);
  host::ApertureCount const found = counter.Count({15.2, 14.8}, {2.0, 6.0, 9.0}, host::RingSky::kMean);
  EXPECT_EQ(21, found.pixels);
  EXPECT_NEAR(6e-6, found.net, 1e-12);
}

TEST_F(Measure, WhatANotANumberSpoilsIsNull) {
  COrbImage image = Field();
  image.SetPixelGrayRaw(61, 40, std::numeric_limits<float>::quiet_NaN(), 0);
  WriteFrame(folder / "nan.fits", image);
  Json const found = MeasureJson({"aperture", folder / "nan.fits", "--at", "60", "40", "--at", "40", "90"});
  EXPECT_TRUE(found[0]["apertures"][0]["net"].is_null());
  EXPECT_TRUE(found[0]["apertures"][1]["net"].is_number());
}

TEST_F(Measure, RegionAndSky) {
  COrbImage image(-32, 4, 2, 3, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, {9, 4, 4, 5, 2, 5, 7, 4, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 8});
  WriteFrame(folder / "small.fits", image);
  Json const whole = MeasureJson({"region", folder / "small.fits"})[0];
  EXPECT_EQ(Json({0, 0, 4, 2}), whole["rect"]);
  EXPECT_EQ((Json{{"max", 9.0}, {"min", 2.0}, {"mean", 5.0}, {"deviation", 2.0}, {"median", 5.0}}), whole["planes"][0]);
  EXPECT_EQ(1.0, whole["planes"][2]["mean"]);
  Json const square = MeasureJson({"region", folder / "small.fits", "--centre", "3", "1", "--size", "1"})[0];
  EXPECT_EQ(Json({3, 1, 4, 2}), square["rect"]);
  EXPECT_EQ(8.0, square["planes"][2]["median"]);
  Json const sky = MeasureJson({"sky", folder / "field.fits", "--rect", "80", "0", "130", "120"})[0]["planes"][0];
  EXPECT_NEAR(1000.0, sky["level"].get<double>(), 0.5);
  EXPECT_NEAR(5.0, sky["noise"].get<double>(), 0.5);
  CommandResult const table = RunLoudly({"measure", "region", folder / "small.fits"});
  EXPECT_NE(table.out.find("deviation"), std::string::npos);
}

TEST_F(Measure, ErrorsAreOneLine) {
  std::string const file = folder / "field.fits";
  auto const fails = [&](std::vector<std::string> arguments, std::vector<std::string> const& parts) {
    arguments.insert(arguments.begin() + 1, file);
    arguments.insert(arguments.begin(), "measure");
    return FailsInOneLine(RunLoudly(arguments), Exit::kUsage, parts);
  };
  EXPECT_TRUE(fails({"stars", "--at", "200", "5"}, {"--at: 200 5 lies off the image of 200 x 120"}));
  EXPECT_TRUE(fails({"aperture", "--at", "9", "9", "--ring", "12", "12"}, {"--ring: 12 12 has no width"}));
  EXPECT_TRUE(fails({"region", "--rect", "0", "0", "201", "5"}, {"--rect: 0 0 201 5"}));
  EXPECT_TRUE(fails({"region", "--centre", "3", "60"}, {"11 pixels a side around 3 60 reach beyond"}));
  EXPECT_TRUE(fails({"stars", "--at", "5", "5", "--stars", "table.json"}, {"--at", "--stars"}));
  WriteConstant(folder / "flat.fits", 60, 60, 100.0f);
  EXPECT_TRUE(FailsInOneLine(RunLoudly({"measure", "stars", folder / "flat.fits"}), Exit::kFailed, {"no stars above"}));
}

}  // namespace
}  // namespace orb::test
