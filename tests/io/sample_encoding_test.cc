// Floats to the numbers of a file: rounding, both ends, what has no value, mappings, strides; and the way back.
#include <hosts/io/sample_encoding.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>
#include <hosts/io/sample_conversion.h>

namespace orb::test {
namespace {

using host::EncodeSamples;
using host::SampleLosses;
using host::SampleMapping;
using host::SampleType;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

template <typename Stored>
std::pair<std::vector<Stored>, SampleLosses> Encode(SampleType type, std::vector<float> const& samples,
                                                    SampleMapping const& mapping = {}) {
  std::vector<Stored> stored(samples.size(), Stored{77});
  SampleLosses const losses =
      EncodeSamples(samples.data(), static_cast<std::int64_t>(samples.size()), mapping, type, stored.data(), 1);
  return {stored, losses};
}

TEST(SampleEncoding, HalvesGoToTheEvenNumber) {
  auto const [stored, losses] =
      Encode<std::uint8_t>(SampleType::kUint8, {0.5f, 1.5f, 2.5f, 2.49f, 3.51f, 254.5f, 7.0f});
  EXPECT_EQ((std::vector<std::uint8_t>{0, 2, 2, 2, 4, 254, 7}), stored);
  EXPECT_EQ(6, losses.rounded);
  EXPECT_EQ(0, losses.below + losses.above + losses.noNumber);
}

TEST(SampleEncoding, BeyondTheEndsAndWithoutAValue) {
  auto const [stored, losses] = Encode<std::uint8_t>(
      SampleType::kUint8, {-0.5f, -0.51f, -1e30f, -kInfinity, 255.4f, 255.5f, kInfinity, NAN, -0.0f});
  EXPECT_EQ((std::vector<std::uint8_t>{0, 0, 0, 0, 255, 255, 255, 0, 0}), stored);
  EXPECT_EQ(3, losses.below);
  EXPECT_EQ(2, losses.above);  // 255.5 lies nearest to 256, the even one
  EXPECT_EQ(1, losses.noNumber);
  EXPECT_EQ(2, losses.rounded);  // -0.5 and 255.4
}

TEST(SampleEncoding, SignedTypesGoBelowZero) {
  auto const [bytes, byteLosses] = Encode<std::int8_t>(SampleType::kInt8, {-128.0f, -129.0f, 127.0f, 128.0f});
  EXPECT_EQ((std::vector<std::int8_t>{-128, -128, 127, 127}), bytes);
  EXPECT_EQ((SampleLosses{1, 1, 0, 0}), byteLosses);
  auto const [shorts, shortLosses] = Encode<std::int16_t>(SampleType::kInt16, {-32768.0f, -40000.0f, 32768.0f});
  EXPECT_EQ((std::vector<std::int16_t>{-32768, -32768, 32767}), shorts);
  EXPECT_EQ((SampleLosses{1, 1, 0, 0}), shortLosses);
}

TEST(SampleEncoding, WideTypesKeepWhatAFloatHolds) {
  auto const [stored, losses] =
      Encode<std::uint32_t>(SampleType::kUint32, {4294967040.0f, 4294967296.0f, 16777216.0f, 0.5f});
  EXPECT_EQ((std::vector<std::uint32_t>{4294967040u, 4294967295u, 16777216u, 0u}), stored);
  EXPECT_EQ((SampleLosses{0, 1, 0, 1}), losses);
  auto const [low, lowLosses] = Encode<std::int32_t>(SampleType::kInt32, {-2147483648.0f, 2147483648.0f});
  EXPECT_EQ((std::vector<std::int32_t>{std::numeric_limits<std::int32_t>::min(), 2147483647}), low);
  EXPECT_EQ((SampleLosses{0, 1, 0, 0}), lowLosses);
}

TEST(SampleEncoding, RoundingEqualsTheLibrarys) {
  std::mt19937 random(2);
  for (int exponent = -3; exponent <= 31; ++exponent) {
    std::vector<float> samples(200);
    for (float& v : samples) v = static_cast<float>(std::ldexp(static_cast<double>(random()), exponent - 32));
    auto const [stored, losses] = Encode<std::uint32_t>(SampleType::kUint32, samples);
    for (std::size_t i = 0; i < samples.size(); ++i) {
      ASSERT_EQ(std::nearbyint(static_cast<double>(samples[i])), static_cast<double>(stored[i]));
    }
  }
}

TEST(SampleEncoding, AMappingIsTakenInDouble) {
  SampleMapping const mapping{100.0, 300.0, 65535.0};
  std::vector<float> const samples{100.0f, 400.0f, 250.0f, 99.0f, 401.0f, 123.456f};
  auto const [stored, losses] = Encode<std::uint16_t>(SampleType::kUint16, samples, mapping);
  EXPECT_EQ(0, stored[0]);
  EXPECT_EQ(65535, stored[1]);
  EXPECT_EQ(32768, stored[2]);  // 32767.5
  EXPECT_EQ(0, stored[3]);
  EXPECT_EQ(65535, stored[4]);
  EXPECT_EQ(std::nearbyint((123.456f - 100.0) / 300.0 * 65535.0), stored[5]);
  EXPECT_EQ((SampleLosses{1, 1, 0, 2}), losses);
  auto const [floats, none] = Encode<float>(SampleType::kFloat, {100.0f, 400.0f, 123.456f}, {100.0, 300.0, 1.0});
  EXPECT_EQ((std::vector<float>{0.0f, 1.0f, static_cast<float>((123.456f - 100.0) / 300.0 * 1.0)}), floats);
  EXPECT_EQ(SampleLosses(), none);
}

TEST(SampleEncoding, AStrideLeavesWhatLiesBetween) {
  float const samples[] = {1.0f, 2.0f};
  std::uint16_t stored[] = {9, 9, 9, 9, 9, 9};
  EncodeSamples(samples, 2, {}, SampleType::kUint16, stored + 1, 3);
  EXPECT_EQ((std::vector<std::uint16_t>{9, 1, 9, 9, 2, 9}), std::vector<std::uint16_t>(stored, stored + 6));
  float back[] = {0.0f, 0.0f};
  host::ConvertSamples(SampleType::kUint16, stored + 1, 2, 3, {}, back);
  EXPECT_EQ(1.0f, back[0]);
  EXPECT_EQ(2.0f, back[1]);
}

TEST(SampleEncoding, LossesInWords) {
  EXPECT_EQ("", SampleLosses().Text(SampleType::kUint8));
  EXPECT_EQ(
      "1 sample below 0 became 0, 2 samples above 255 became 255, 3 samples without a value became 0, 4 samples "
      "rounded to whole numbers",
      (SampleLosses{1, 2, 3, 4}.Text(SampleType::kUint8)));
  EXPECT_EQ("1 sample below -32768 became -32768", (SampleLosses{1, 0, 0, 0}.Text(SampleType::kInt16)));
}

}  // namespace
}  // namespace orb::test
