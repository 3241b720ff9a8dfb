// The restorations on real frames: what they must keep, and the blur that stars tell.
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/orbimg/star_width.h>
#include <tests/command/command_support.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

class RealRestorations : public testing::Test {
 protected:
  void SetUp() override {
    if (SamplePath("deconvolution/titan_ao.fits").empty()) GTEST_SKIP() << "ORBIMG_SAMPLES is not set: no real frames";
  }

  std::vector<float> Restored(std::string const& name, std::string const& sample, std::vector<std::string> more) {
    more.insert(more.begin(), {"restore", name, SamplePath(sample), "-f", "-o", folder / "out.fits"});
    EXPECT_TRUE(Succeeds(RunQuietly(more)));
    return SamplesOf(ReadFrame(folder / "out.fits").image);
  }

  ScratchFolder folder;
};

double SumOf(std::vector<float> const& samples) {
  double sum = 0.0;
  for (float const v : samples) sum += v;
  return sum;
}

host::StarWidth BlurOf(std::string const& from, std::string const& sample) {
  return host::MeasureBlur(from, ReadFrame(SamplePath(sample)).image, sample);
}

TEST_F(RealRestorations, StarsTellTheBlur) {
  std::string const titan = "deconvolution/titan_ao.fits";
  EXPECT_NEAR(2.24, BlurOf(SamplePath("deconvolution/titan_ao_psf_0.fits"), titan).sigma, 0.05);
  EXPECT_NEAR(2.33, BlurOf(SamplePath("deconvolution/titan_ao_psf_5.fits"), titan).sigma, 0.05);
  // Stars chosen by hand, and those that are found between the knots of the galaxy.
  std::string const m51 = "deepsky/M51_B_600s.fits";
  WriteText(folder / "m51.csv", "346.6,323.2\n441.0,102.3\n378.2,445.2\n403.5,237.7\n464.5,449.9\n223.3,380.8\n");
  double const byHand = BlurOf(folder / "m51.csv", m51).sigma;
  EXPECT_NEAR(1.10, byHand, 0.03);
  EXPECT_NEAR(byHand, BlurOf(SamplePath(m51), m51).sigma, 0.1);
}

TEST_F(RealRestorations, KeepTheLightOfTitanAndBringOutItsFeatures) {
  std::string const titan = "deconvolution/titan_ao.fits";
  std::vector<float> const before = SamplesOf(ReadFrame(SamplePath(titan)).image);
  std::string const star = SamplePath("deconvolution/titan_ao_psf_0.fits");
  std::vector<float> const lucy = Restored("lucy", titan, {"--psf-from", star, "--noise", "10"});
  std::vector<float> const mem = Restored("mem", titan, {"--psf-from", star});
  EXPECT_NEAR(1.0, SumOf(lucy) / SumOf(before), 0.005);
  EXPECT_NEAR(1.0, SumOf(mem) / SumOf(before), 0.03);
  EXPECT_GE(*std::min_element(lucy.begin(), lucy.end()), 0.0f);
  EXPECT_GT(*std::min_element(mem.begin(), mem.end()), 0.0f);
  float const peak = *std::max_element(before.begin(), before.end());
  EXPECT_GT(*std::max_element(lucy.begin(), lucy.end()), 1.01f * peak);
  EXPECT_GT(*std::max_element(mem.begin(), mem.end()), 1.01f * peak);
}

}  // namespace
}  // namespace orb::test
