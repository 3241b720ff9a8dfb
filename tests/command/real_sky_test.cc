// The sky of a real frame: flatter after each correction, and by how much.
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/io/fits_file.h>
#include <tests/command/command_support.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

constexpr char const* kShaded = "sky_background/t1m_90s_vignetted.fits";

class RealSky : public testing::Test {
 protected:
  void SetUp() override {
    if (SamplePath(kShaded).empty()) GTEST_SKIP() << "ORBIMG_SAMPLES is not set: no real frames";
  }

  COrbImage Sky(std::vector<std::string> words) {
    words.insert(words.begin(), "sky");
    words.insert(words.begin() + 2, SamplePath(kShaded));
    words.insert(words.end(), {"-f", "-o", folder / "out.fits"});
    EXPECT_TRUE(Succeeds(RunQuietly(words)));
    return ReadFrame(folder / "out.fits").image;
  }

  ScratchFolder folder;
};

// Standard deviation of the medians of tiles, as a share of their mean; on a grid that no correction knows.
double Unevenness(COrbImage const& image) {
  constexpr int kTile = 50;
  double sum = 0.0;
  double squares = 0.0;
  int count = 0;
  for (int y = 0; y < image.GetHeight(); y += kTile) {
    for (int x = 0; x < image.GetWidth(); x += kTile) {
      double const median = CalcSpread(image, CRect(x, y, x + kTile, y + kTile), 0).median;
      sum += median;
      squares += median * median;
      ++count;
    }
  }
  double const mean = sum / count;
  return std::sqrt(squares / count - mean * mean) / mean;
}

TEST_F(RealSky, TheModelTakesMostOfTheShadingOff) {
  COrbImage frame = ReadFrame(SamplePath(kShaded)).image;
  COrbImage model = Sky({"model"});
  EXPECT_GT(Unevenness(frame), 0.015);
  frame.FlatClbrtn(&model, 0);
  EXPECT_LT(Unevenness(frame), 0.0025);
}

TEST_F(RealSky, AFittedFallOffAndAFittedRampHalveTheShading) {
  EXPECT_LT(Unevenness(Sky({"flat", "--corner", "0.9456", "--center-x", "-383", "--center-y", "622"})), 0.008);
  EXPECT_LT(Unevenness(Sky({"ramp", "--slope", "-0.0336", "--columns", "1000", "--rows", "-93"})), 0.008);
}

TEST_F(RealSky, AMaskTakesTheStars) {
  COrbImage const mask = Sky({"mask", "--threshold", "900"});
  int blank = 0;
  for (float v : SamplesOf(mask)) blank += v == 0.0f ? 1 : 0;
  EXPECT_GT(blank, 1500);
  EXPECT_LT(blank, 3000);
}

}  // namespace
}  // namespace orb::test
