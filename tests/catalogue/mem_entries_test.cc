// What the entry of the maximum entropy restoration lets through, and what comes out on real frames.
#include <cmath>

#include <gtest/gtest.h>
#include <hosts/catalogue/catalogue.h>
#include <hosts/catalogue/check.h>
#include <hosts/io/fits_file.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

host::Invocation CallOn(COrbImage& image, std::vector<double> values, CRect* rect = nullptr) {
  host::Invocation call;
  call.image = &image;
  call.values = std::move(values);
  call.rect = rect;
  return call;
}

TEST(MemEntry, RefusesSmallWindowsAndSkiesWithoutLight) {
  host::OperatorEntry const& mem = *host::FindOperator("mem");
  COrbImage image(-32, 64, 40, 1, 1.0, 0.0, 1, nullptr, nullptr);
  std::string const dark = host::CheckInvocation(mem, CallOn(image, mem.Defaults()));
  EXPECT_NE(std::string::npos, dark.find("sums to 0")) << dark;
  for (int x = 0; x < 64; ++x) image.SetPixelGrayRaw(x, 20, 5.0f, 0);
  EXPECT_EQ("", host::CheckInvocation(mem, CallOn(image, mem.Defaults())));
  CRect narrow(0, 0, 32, 40);
  std::string const small = host::CheckInvocation(mem, CallOn(image, mem.Defaults(), &narrow));
  EXPECT_NE(std::string::npos, small.find("32 x 40")) << small;
  CRect wide(0, 0, 33, 40);
  EXPECT_EQ("", host::CheckInvocation(mem, CallOn(image, mem.Defaults(), &wide)));
  image.SetPixelGrayRaw(3, 3, std::nanf(""), 0);
  EXPECT_NE("", host::CheckInvocation(mem, CallOn(image, mem.Defaults())));
}

double SumOf(COrbImage const& image) {
  double sum = 0.0;
  for (float v : SamplesOf(image)) sum += v;
  return sum;
}

// Root mean square difference of horizontal neighbours: what a blur takes away.
double Contrast(COrbImage const& image) {
  std::vector<float> const samples = SamplesOf(image);
  double sum = 0.0;
  for (std::size_t i = 1; i < samples.size(); ++i) sum += std::pow(static_cast<double>(samples[i]) - samples[i - 1], 2);
  return std::sqrt(sum / static_cast<double>(samples.size()));
}

// Planets come out sharper, positive, and as bright as they were.
TEST(MemEntry, SharpensRealPlanets) {
  struct Case {
    char const* file;
    double sigma;
    double noise;
  };
  host::OperatorEntry const& mem = *host::FindOperator("mem");
  for (Case c : {Case{"deconvolution/titan_ao.fits", 1.8, 30.0}, Case{"planet/jupiter_256.fits", 1.5, 3.0}}) {
    std::string const path = SamplePath(c.file);
    if (path.empty()) GTEST_SKIP() << "ORBIMG_SAMPLES is not set";
    host::Frame frame;
    host::ReadFits(path, frame);
    COrbImage const before(frame.image);
    host::Invocation const call = CallOn(frame.image, {c.sigma, c.noise, 20.0});
    ASSERT_EQ("", host::CheckInvocation(mem, call)) << c.file;
    ASSERT_EQ(1, mem.run(call)) << c.file;
    EXPECT_GT(Contrast(frame.image), 1.05 * Contrast(before)) << c.file;
    EXPECT_NEAR(1.0, SumOf(frame.image) / SumOf(before), 0.03) << c.file;
    for (float v : SamplesOf(frame.image)) ASSERT_GT(v, 0.0f) << c.file;
  }
}

}  // namespace
}  // namespace orb::test
