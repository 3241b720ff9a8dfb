// Filters on real frames: what they are for is what they do.
#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/io/fits_file.h>
#include <tests/command/command_support.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

class RealFilters : public testing::Test {
 protected:
  void SetUp() override {
    if (SamplePath("deepsky/M51_B_600s.fits").empty()) GTEST_SKIP() << "ORBIMG_SAMPLES is not set: no real frames";
  }

  std::vector<float> Filtered(std::string const& name, std::string const& sample, std::vector<std::string> more) {
    more.insert(more.begin(), {"filter", name, SamplePath(sample), "-f", "-o", folder / "out.fits"});
    EXPECT_TRUE(Succeeds(RunQuietly(more)));
    return SamplesOf(ReadFrame(folder / "out.fits").image);
  }

  ScratchFolder folder;
};

std::vector<float> Samples(std::string const& sample) { return SamplesOf(ReadFrame(SamplePath(sample)).image); }

float MedianOf(std::vector<float> samples) {
  auto const middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
  std::nth_element(samples.begin(), middle, samples.end());
  return *middle;
}

// Cosmic rays strike one dark; hot pixels shine in each.
std::vector<float> LeastOfTheDarks() {
  std::vector<float> least = Samples("series_tres1/dark_001.fits");
  for (char const* other : {"006", "011", "016"}) {
    std::vector<float> const dark = Samples("series_tres1/dark_" + std::string(other) + ".fits");
    for (std::size_t i = 0; i < least.size(); ++i) least[i] = std::min(least[i], dark[i]);
  }
  return least;
}

TEST_F(RealFilters, NoiseCutFindsTheHotPixelsOfTheDarkInARawLight) {
  std::vector<float> const dark = LeastOfTheDarks();
  float const hot = MedianOf(dark) + 300.0F;
  std::vector<float> const raw = Samples("series_tres1/light_110.fits");
  std::vector<float> const result =
      Filtered("noise-cut", "series_tres1/light_110.fits", {"--cut", "hot", "--hot-threshold", "0.1"});
  ASSERT_EQ(raw.size(), result.size());
  std::size_t hotPixels = 0;
  std::size_t replaced = 0;
  std::size_t changed = 0;
  for (std::size_t i = 0; i < raw.size(); ++i) {
    ASSERT_LE(result[i], raw[i]) << i;
    bool const isReplaced = result[i] != raw[i];
    changed += isReplaced ? 1 : 0;
    if (dark[i] <= hot) continue;
    ++hotPixels;
    replaced += isReplaced ? 1 : 0;
  }
  EXPECT_GT(hotPixels, 200U);
  EXPECT_GE(replaced, hotPixels * 95 / 100);
  EXPECT_LT(changed, raw.size() / 400);
}

TEST_F(RealFilters, DigitalDevelopmentHoldsTheSkyAndBendsTheStars) {
  std::string const m51 = "deepsky/M51_B_600s.fits";
  std::vector<float> const before = Samples(m51);
  std::vector<float> const after = Filtered("digital-development", m51, {"--pivot", "1000"});
  EXPECT_NEAR(MedianOf(before), MedianOf(after), 5.0);
  EXPECT_LT(*std::max_element(after.begin(), after.end()), 0.1F * *std::max_element(before.begin(), before.end()));
}

TEST_F(RealFilters, StarSharpKeepsThePeaksOfStarsAndTakesTheirLight) {
  std::string const m57 = "deepsky/M57_30s.fits";
  std::vector<float> const before = Samples(m57);
  std::vector<float> const after = Filtered("star-sharp", m57, {"--keep-peaks"});
  EXPECT_EQ(*std::max_element(before.begin(), before.end()), *std::max_element(after.begin(), after.end()));
  auto const isBright = [](float sample) { return sample > 1000.0F; };
  EXPECT_LT(3 * std::count_if(after.begin(), after.end(), isBright),
            2 * std::count_if(before.begin(), before.end(), isBright));
}

}  // namespace
}  // namespace orb::test
