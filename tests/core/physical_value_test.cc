// CImage::GetPixel: the physical value of a sample of any format.
#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>

namespace orb::test {
namespace {

class PhysicalValue : public testing::Test {
 protected:
  template <typename T>
  double Read(int bitsPixel, int isSigned, T sample) {
    CImage image(bitsPixel, 2, 2, 1, 2.0, 100.0, isSigned, nullptr, nullptr);
    std::memcpy(image.GetImageAdr(1, 1, 0, 0, nullptr), &sample, sizeof(sample));
    double const value = image.GetPixel(1, 1, 0);
    EXPECT_EQ(value, image.GetPixel(image.GetImageAdr(1, 1, 0, 1, nullptr)));
    return value;
  }
};

TEST_F(PhysicalValue, IsScaledAndOffset) {
  EXPECT_EQ(2.0 * 0.1 + 100.0, Read(-64, 1, 0.1));
  EXPECT_EQ(2.0 * 0.1f + 100.0, Read(-32, 1, 0.1f));
  EXPECT_EQ(2.0 * 200 + 100.0, Read(8, 1, std::uint8_t{200}));
  EXPECT_EQ(2.0 * 200 + 100.0, Read(8, 0, std::uint8_t{200}));
  EXPECT_EQ(2.0 * -5 + 100.0, Read(16, 1, std::int16_t{-5}));
  EXPECT_EQ(2.0 * 65531 + 100.0, Read(16, 0, std::int16_t{-5}));
  EXPECT_EQ(2.0 * -5 + 100.0, Read(32, 1, std::int32_t{-5}));
  EXPECT_EQ(2.0 * 4294967291.0 + 100.0, Read(32, 0, std::int32_t{-5}));
}

TEST_F(PhysicalValue, IsZeroForAnUnknownFormat) {
  CImage image(-32, 2, 2, 1, 2.0, 100.0, 1, nullptr, nullptr);
  image.SetBitsPixel(24);
  EXPECT_EQ(0.0, image.GetPixel(image.GetImageAdr(0, 0, 0, 1, nullptr)));
  image.SetBitsPixel(-16);
  EXPECT_EQ(0.0, image.GetPixel(image.GetImageAdr(0, 0, 0, 1, nullptr)));
}

}  // namespace
}  // namespace orb::test
