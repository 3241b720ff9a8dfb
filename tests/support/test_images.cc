#include <tests/support/test_images.h>

#include <cstdlib>
#include <cstring>
#include <limits>

namespace orb::test {

namespace {

float* AllSamples(COrbImage const& image) { return image.GetImageAdr(0, 0, 0, 0, nullptr); }

std::size_t SampleCount(COrbImage const& image) { return static_cast<std::size_t>(image.GetPixelCount()); }

}  // namespace

void FillRandom(COrbImage& image, Random& random, double low, double high) {
  std::uniform_real_distribution<double> value(low, high);
  std::uniform_int_distribution<int> kind(0, 9);
  float* samples = AllSamples(image);
  for (std::size_t i = 0; i < SampleCount(image); ++i) {
    bool const repeat = i > 0 && kind(random) == 0;
    samples[i] = repeat ? samples[i - 1] : static_cast<float>(value(random));
  }
}

void FillJunk(COrbImage& image) {
  float* samples = AllSamples(image);
  for (std::size_t i = 0; i < SampleCount(image); ++i) samples[i] = -7.5e6f - static_cast<float>(i % 1000);
}

void SetRandomLevels(COrbImage& image, Random& random) {
  std::uniform_real_distribution<double> low(-50.0, 100.0);
  std::uniform_real_distribution<double> range(10.0, 300.0);
  for (int p = 0; p < image.GetPlanes(); ++p) {
    double const min = low(random);
    image.CImage::SetLevel(p, min, min + range(random));
  }
}

COrbImage RandomImage(Random& random, int width, int height, int planes) {
  COrbImage image(-32, width, height, planes, 1.0, 0.0, 1, nullptr, nullptr);
  FillRandom(image, random);
  SetRandomLevels(image, random);
  return image;
}

std::vector<RectCase> RectCases(int width, int height) {
  return {
      {"null", false, CRect()},
      {"whole", true, CRect(0, 0, width, height)},
      {"inset 1", true, CRect(1, 1, width - 1, height - 1)},
      {"inset 13", true, CRect(13, 13, width - 13, height - 13)},
      {"one row", true, CRect(0, height / 2, width, height / 2 + 1)},
      {"one column", true, CRect(width / 2, 0, width / 2 + 1, height)},
      {"beyond the top left", true, CRect(-5, -7, width / 2 + 1, height / 2 + 1)},
      {"beyond the bottom right", true, CRect(width / 3, height / 3, width + 9, height + 100)},
      {"wholly left", true, CRect(-20, 0, -3, height)},
      {"wholly below", true, CRect(0, height + 2, width, height + 8)},
      {"empty", true, CRect(width / 2, height / 2, width / 2, height / 2)},
      {"reversed", true, CRect(width, height, 0, 0)},
      {"extreme", true,
       CRect(std::numeric_limits<int>::min(), std::numeric_limits<int>::min(), std::numeric_limits<int>::max(),
             std::numeric_limits<int>::max())},
  };
}

std::vector<float> SamplesOf(COrbImage const& image) {
  float const* samples = AllSamples(image);
  return std::vector<float>(samples, samples + SampleCount(image));
}

void SetSamples(COrbImage& image, std::vector<float> const& samples) {
  ASSERT_EQ(samples.size(), SampleCount(image));
  if (!samples.empty()) std::memcpy(AllSamples(image), samples.data(), samples.size() * sizeof(float));
}

testing::AssertionResult SameBits(std::vector<float> const& expected, std::vector<float> const& actual) {
  if (expected.size() != actual.size()) {
    return testing::AssertionFailure() << expected.size() << " samples expected, " << actual.size() << " found";
  }
  for (std::size_t i = 0; i < expected.size(); ++i) {
    if (std::memcmp(&expected[i], &actual[i], sizeof(float)) == 0) continue;
    return testing::AssertionFailure() << "sample " << i << ": expected " << expected[i] << ", found " << actual[i]
                                       << ", difference " << actual[i] - expected[i];
  }
  return testing::AssertionSuccess();
}

testing::AssertionResult SameBits(COrbImage const& expected, COrbImage const& actual) {
  if (expected.GetWidth() != actual.GetWidth() || expected.GetHeight() != actual.GetHeight() ||
      expected.GetPlanes() != actual.GetPlanes()) {
    return testing::AssertionFailure() << "shapes differ";
  }
  return SameBits(SamplesOf(expected), SamplesOf(actual));
}

testing::AssertionResult SameLevels(COrbImage const& expected, COrbImage const& actual) {
  for (int p = 0; p < expected.GetPlanes(); ++p) {
    if (expected.GetLevelMin(p) == actual.GetLevelMin(p) && expected.GetLevelMax(p) == actual.GetLevelMax(p) &&
        expected.GetLevelRange(p) == actual.GetLevelRange(p)) {
      continue;
    }
    return testing::AssertionFailure() << "levels of plane " << p << ": expected " << expected.GetLevelMin(p) << " to "
                                       << expected.GetLevelMax(p) << ", found " << actual.GetLevelMin(p) << " to "
                                       << actual.GetLevelMax(p);
  }
  return testing::AssertionSuccess();
}

std::string SamplePath(std::string const& name) {
  char const* const folder = std::getenv("ORBIMG_SAMPLES");
  return folder == nullptr || *folder == '\0' ? std::string() : std::string(folder) + "/" + name;
}

}  // namespace orb::test
