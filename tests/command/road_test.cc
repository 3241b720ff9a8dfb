// The whole road: a small simulated night, and real frames.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/orbimg/alignment_file.h>
#include <hosts/orbimg/file_list.h>
#include <hosts/orbimg/frame_statistics.h>
#include <hosts/orbimg/simulation_files.h>
#include <hosts/orbimg/truth_check.h>
#include <tests/command/command_support.h>
#include <tests/support/fonts.h>
#include <tests/support/test_images.h>
#include <nlohmann/json.hpp>

namespace orb::test {
namespace {

using host::FrameTransform;
using Json = nlohmann::json;

class RoadTest : public testing::Test {
 protected:
  void Run(std::vector<std::string> const& arguments) { ASSERT_TRUE(Succeeds(RunQuietly(arguments))) << arguments[0]; }

  static double NoiseIn(COrbImage const& image, CRect const& rect) { return host::MeasureSky(image, 0, &rect).noise; }

  ScratchFolder folder;
};

TEST_F(RoadTest, SimulatedNightFromRawFramesToAPicture) {
  Run({"simulate", "-o", folder / "raw", "--frames", "6", "--darks", "4", "--flats", "4", "--width", "400", "--height",
       "320", "--stars", "150", "--trail", "3"});
  Run({"calibrate", folder / "raw/light_*.fits", "--dark", folder / "raw/dark_*.fits", "--flat",
       folder / "raw/flat_*.fits", "--flat-dark", folder / "raw/flatdark_*.fits", "-o", folder / "cal"});
  Run({"align", folder / "cal/light_*.fits", "-o", folder / "a.json"});
  Run({"stack", folder / "a.json", "--equal-sky", "-o", folder / "s.fits"});
  Run({"level", folder / "s.fits", "--median", "1", "3", "-o", folder / "l.fits"});
  Run({"render", folder / "l.fits", "-o", folder / "p.png"});

  host::SimulationTruth const truth = host::ReadTruth(folder / "raw/truth.json");
  host::AlignmentList const list = host::ReadAlignment(folder / "a.json");
  ASSERT_EQ(list.frames.size(), 6u);
  for (std::size_t i = 0; i < 6; ++i) {
    EXPECT_LT(host::FindTransformError(list.frames[i].transform, truth.frames[i].transform, 400, 320), 0.25) << i;
  }
  host::Frame const frame = ReadFrame(folder / "cal/light_001.fits");
  host::Frame const stack = ReadFrame(folder / "s.fits");
  CRect const inside(30, 30, 370, 290);
  double const gain = NoiseIn(frame.image, inside) / NoiseIn(stack.image, inside);
  // The median of six keeps about 1.2 times the noise of their mean; interpolation takes some away.
  EXPECT_GT(gain, std::sqrt(6.0) / 1.3);
  EXPECT_LT(gain, std::sqrt(6.0) * 1.5);
  ASSERT_TRUE(truth.trail);
  host::RigidMap const map(truth.frames[2].transform);
  double const left =
      host::FindLineExcess(stack.image, map.ToReference(truth.trail->from), map.ToReference(truth.trail->to));
  EXPECT_LT(std::abs(left), 0.05 * truth.trail->peak);
  EXPECT_EQ(stack.header.Number("STACKCNT"), 6.0);
  EXPECT_EQ(stack.header.Number("EXPTOTAL"), 360.0);
  EXPECT_TRUE(SameBits(stack.image, ReadFrame(folder / "l.fits").image));
}

TEST_F(RoadTest, OneSeedGivesTheSameFilesAgain) {
  for (char const* name : {"one", "two"}) {
    Run({"simulate", "-o", folder / name, "--frames", "2", "--darks", "1", "--flats", "1", "--width", "100", "--height",
         "80", "--seed", "7", "--threads", name == std::string("one") ? "1" : "3"});
  }
  for (char const* file : {"light_002.fits", "dark_001.fits", "flat_001.fits", "flatdark_001.fits", "truth.json"}) {
    EXPECT_TRUE(ReadText(folder / (std::string("one/") + file)) == ReadText(folder / (std::string("two/") + file)))
        << file;
  }
}

TEST_F(RoadTest, AFrameThatCannotBeAlignedIsNamedAndTheRestGoesOn) {
  Run({"simulate", "-o", folder / "raw", "--frames", "3", "--darks", "0", "--flats", "0", "--width", "300", "--height",
       "300"});
  WriteConstant(folder / "raw/light_002x.fits", 300, 300, 1000.0f);
  CommandResult const result = RunQuietly(
      {"align", folder / "raw/light_*.fits", "--reference", folder / "raw/light_003.fits", "-o", folder / "a.json"});
  EXPECT_EQ(result.status, host::Exit::kDone);
  EXPECT_NE(result.err.find("light_002x.fits: left out"), std::string::npos) << result.err;
  host::AlignmentList const list = host::ReadAlignment(folder / "a.json");
  EXPECT_EQ(list.frames.size(), 3u);
  EXPECT_EQ(list.leftOut.size(), 0u);
  EXPECT_TRUE(list.reference.ends_with("light_003.fits"));
  Json const document = Json::parse(ReadText(folder / "a.json"));
  ASSERT_EQ(document["left_out"].size(), 1u);
  EXPECT_EQ(document["left_out"][0]["file"], "raw/light_002x.fits");
}

TEST_F(RoadTest, TwoStarFitIsTheLibrarysAndSaidSo) {
  Run({"simulate", "-o", folder / "raw", "--frames", "2", "--darks", "0", "--flats", "0", "--rotation", "1.234"});
  Run({"align", folder / "raw/light_*.fits", "--two-stars", "-o", folder / "two.json"});
  Run({"align", folder / "raw/light_*.fits", "-o", folder / "all.json"});
  host::AlignedFrame const two = host::ReadAlignment(folder / "two.json").frames[1];
  host::AlignedFrame const all = host::ReadAlignment(folder / "all.json").frames[1];
  EXPECT_EQ(two.method, "two stars");
  EXPECT_EQ(all.method, "all stars");
  EXPECT_NEAR(two.transform.angle * 10.0, std::round(two.transform.angle * 10.0), 1e-9);
  EXPECT_NEAR(all.transform.angle, host::ReadTruth(folder / "raw/truth.json").frames[1].transform.angle, 0.02);
  EXPECT_GT(all.stars, 20);
  EXPECT_LT(all.residual.value(), two.residual.value());
}

TEST_F(RoadTest, DemoReportsWhatItDid) {
  CommandResult const result = RunQuietly({"demo", "--json", "-o", folder / "demo"});
  ASSERT_TRUE(Succeeds(result));
  Json const report = Json::parse(result.out);
  EXPECT_EQ(report["frames_aligned"], 12);
  EXPECT_LT(report["alignment_error_worst"].get<double>(), 0.25);
  EXPECT_GT(report["noise_gain"].get<double>(), 2.7);
  EXPECT_EQ(report["hot_gone"], true);
  EXPECT_GT(report["hot_raw"]["spikes"].get<int>(), 200);
  EXPECT_LT(std::abs(report["trail_stack"].get<double>()), 0.05 * report["trail_frame"].get<double>());
  EXPECT_LT(std::abs(report["trail_rejection"].get<double>()), 0.05 * report["trail_frame"].get<double>());
  EXPECT_EQ(report["caption"], CanDrawText());
  for (char const* file : {"median.fits", "rejection.fits", "levelled.fits", "stack.png", "raw.png", "report.json"}) {
    EXPECT_TRUE(std::filesystem::exists(folder / (std::string("demo/") + file))) << file;
  }
}

// What carries a position of the frame to the reference, y upward: a counter-clockwise rotation about the middle of the
// frame, then a shift.
struct Measured {
  char const* name;
  double shiftX;
  double shiftY;
  double rotation;  // degrees
};

FrameTransform TransformOf(Measured const& measured, double middleX, double middleY) {
  return FrameTransform{measured.shiftX, -measured.shiftY, -measured.rotation, middleX, middleY};
}

TEST_F(RoadTest, RealBrightSeries) {
  std::string const series = SamplePath("series_tres1");
  if (series.empty()) GTEST_SKIP() << "ORBIMG_SAMPLES is not set: no real frames";
  Run({"calibrate", series + "/light_*.fits", "--dark", series + "/dark_*.fits", "--sky-flat", "-o", folder / "cal",
       "--save-flat", folder / "flat.fits"});
  Run({"align", folder / "cal/light_*.fits", "--reference", folder / "cal/light_110.fits", "-o", folder / "a.json"});
  host::AlignmentList const list = host::ReadAlignment(folder / "a.json");
  Measured const table[] = {{"light_021", 53.54, -83.41, -0.017}, {"light_050", 38.26, -54.14, -0.015},
                            {"light_080", 19.12, -24.78, -0.009}, {"light_110", 0.0, 0.0, 0.0},
                            {"light_140", -20.52, 21.39, 0.010},  {"light_170", -42.78, 37.92, 0.022},
                            {"light_200", -65.81, 50.42, 0.037},  {"light_229", -87.11, 57.30, 0.054}};
  ASSERT_EQ(list.frames.size(), 8u);
  for (std::size_t i = 0; i < 8; ++i) {
    EXPECT_EQ(host::StemOf(list.frames[i].file), table[i].name);
    EXPECT_LT(host::FindTransformError(list.frames[i].transform, TransformOf(table[i], 545.5, 367.5), 1092, 736), 0.3)
        << table[i].name;
  }

  // The flat: dust shadows stay, stars vanish.
  host::Frame flat = ReadFrame(folder / "flat.fits");
  std::vector<float> samples = SamplesOf(flat.image);
  std::sort(samples.begin(), samples.end());
  double const median = samples[samples.size() / 2];
  EXPECT_NEAR(samples[samples.size() / 100] / median, 0.975, 0.01);
  EXPECT_NEAR(samples[samples.size() * 99 / 100] / median, 1.030, 0.01);

  Run({"stack", folder / "a.json", "--equal-sky", "-o", folder / "s.fits"});
  CRect const inside(150, 150, 940, 580);
  double const before = NoiseIn(ReadFrame(folder / "cal/light_110.fits").image, inside);
  double const after = NoiseIn(ReadFrame(folder / "s.fits").image, inside);
  EXPECT_GT(before / after, 2.0);
  EXPECT_LT(before / after, 2.0 * std::sqrt(8.0));
}

// Single frames show hardly a star: matching is the way. The table is good to about half a pixel.
TEST_F(RoadTest, RealFaintSeries) {
  std::string const series = SamplePath("series_m13");
  if (series.empty()) GTEST_SKIP() << "ORBIMG_SAMPLES is not set: no real frames";
  CommandResult const table =
      RunQuietly({"align", series + "/M13_*.fits", "--method", "match", "-o", folder / "a.json"});
  ASSERT_TRUE(Succeeds(table));
  EXPECT_NE(table.out.find("     0        -  match"), std::string::npos) << table.out;
  host::AlignmentList const list = host::ReadAlignment(folder / "a.json");
  double const dx[] = {0.0, 11.4, 24.2, 34.4, 46.7};
  double const dy[] = {0.0, 1.0, 3.5, 4.1, 3.9};  // downward
  ASSERT_EQ(list.frames.size(), 5u);
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_NEAR(list.frames[i].transform.dx, dx[i], 0.8) << i;
    EXPECT_NEAR(list.frames[i].transform.dy, dy[i], 0.8) << i;
    EXPECT_EQ(list.frames[i].method, i == 0 ? "reference" : "match");
    EXPECT_FALSE(list.frames[i].residual.has_value());
  }
  Run({"stack", folder / "a.json", "--mode", "average", "-o", folder / "s.fits"});
  CRect const inside(60, 20, 500, 490);
  double const before = NoiseIn(ReadFrame(series + "/M13_blue_0001_crop.fits").image, inside);
  double const after = NoiseIn(ReadFrame(folder / "s.fits").image, inside);
  EXPECT_GT(before / after, 1.8);
}

}  // namespace
}  // namespace orb::test
