// Conversions among the five sample formats.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

struct Format {
  int bits;
  int isSigned;
};

constexpr Format kFormats[] = {{-64, 1}, {-32, 1}, {8, 0}, {16, 0}, {16, 1}, {32, 0}, {32, 1}};

// What a format keeps of a value.
double Kept(double v, int bits, int isSigned) {
  if (bits == -64) return v;
  if (bits == -32) return static_cast<float>(v);
  if (std::isnan(v)) return 0.0;
  double const low = bits == 8 || !isSigned ? 0.0 : -std::ldexp(1.0, bits - 1);
  double const high = std::ldexp(1.0, bits == 8 || !isSigned ? bits : bits - 1) - 1.0;
  double const whole = std::floor(v + 0.5);
  return whole < low ? low : whole > high ? high : whole;
}

std::vector<double> Values() {
  std::vector<double> values = {
      0.0,          0.4999,       0.5,       1.5,     -0.5,         -0.50001,     254.5,         255.0,
      255.5,        300.0,        -1.0,      32767.0, 32767.5,      -32768.0,     -32768.6,      65535.0,
      65535.4,      70000.0,      1e6 + 0.3, 1e9,     2147483647.0, 2147483647.5, -2147483648.0, -2147483649.0,
      4294967295.0, 4294967296.0, 1e300,     -1e300,  INFINITY,     -INFINITY,    NAN,           0.1};
  Random random(61);
  std::uniform_real_distribution<double> value(-70000.0, 70000.0);
  while (values.size() < 100) values.push_back(value(random));
  return values;
}

CImage* NewDoubles(std::vector<double> const& values, int isSigned) {
  auto* const image = new CImage(-64, static_cast<int>(values.size()), 1, 1, 1.0, 0.0, isSigned, nullptr, nullptr);
  std::memcpy(image->GetImageAdr(0, 0, 0, 0, nullptr), values.data(), values.size() * sizeof(double));
  return image;
}

TEST(ChangeBits, ConvertsAmongAllFormats) {
  std::vector<double> const values = Values();
  for (Format from : kFormats) {
    for (int to : {-64, -32, 8, 16, 32}) {
      std::unique_ptr<CImage> image(NewDoubles(values, from.isSigned));
      ASSERT_NE(0, image->ChangeBits(from.bits, 1, 1, nullptr, nullptr));
      ASSERT_NE(0, image->ChangeBits(to, 1, 1, nullptr, nullptr));
      EXPECT_EQ(to, image->GetBitsPixel());
      EXPECT_EQ(from.isSigned, image->IsSigned());
      for (std::size_t i = 0; i < values.size(); ++i) {
        double const expected = Kept(Kept(values[i], from.bits, from.isSigned), to, from.isSigned);
        double const found = image->GetPixel(static_cast<int>(i), 0, 0);
        EXPECT_TRUE(expected == found || (std::isnan(expected) && std::isnan(found)))
            << values[i] << " by " << from.bits << " to " << to << ": " << found << " for " << expected;
      }
    }
  }
}

TEST(ChangeBits, KeepsShapeLevelsAndRecords) {
  Random random(62);
  COrbImage image = RandomImage(random, 5, 4, 3);
  image.SetBscale(3.0);
  COrbImage const before(image);
  ASSERT_NE(0, image.ChangeBits(-64, 0, 0, nullptr, nullptr));
  EXPECT_EQ(5, image.GetWidth());
  EXPECT_EQ(4, image.GetHeight());
  EXPECT_EQ(3, image.GetPlanes());
  EXPECT_EQ(3.0, image.GetBscale());
  ASSERT_NE(0, image.ChangeBits(-32, 1, 1, nullptr, nullptr));
  EXPECT_TRUE(SameBits(before, image));
  EXPECT_TRUE(SameLevels(before, image));
}

TEST(ChangeBits, KeepsTheSignOfZero) {
  COrbImage image(-32, 1, 1, 1, 1.0, 0.0, 1, nullptr, nullptr);
  image.SetPixelGrayRaw(0, 0, -0.0f, 0);
  ASSERT_NE(0, image.ChangeBits(-64, 1, 1, nullptr, nullptr));
  ASSERT_NE(0, image.ChangeBits(-32, 1, 1, nullptr, nullptr));
  EXPECT_TRUE(std::signbit(image.GetPixelGrayRaw(0, 0, 0)));
}

TEST(ChangeBits, RefusesUnknownFormats) {
  Random random(63);
  COrbImage image = RandomImage(random, 5, 4, 1);
  COrbImage const before(image);
  for (int bits : {0, 1, 24, -8, -16, 64, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(0, image.ChangeBits(bits, 1, 1, nullptr, nullptr)) << bits;
    EXPECT_EQ(-32, image.GetBitsPixel());
    EXPECT_TRUE(SameBits(before, image));
  }
}

}  // namespace
}  // namespace orb::test
