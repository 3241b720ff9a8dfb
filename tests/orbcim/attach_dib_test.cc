// Bitmaps become images: every depth, both row orders, palettes, and blocks that are not what they say.
#include <climits>
#include <cstdint>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>
#include <orbimg/orbimg.h>
#include <tests/support/test_images.h>

namespace orb::test {
namespace {

// A bitmap being put together: header, palette, rows as they lie in memory.
struct Bitmap {
  BITMAPINFOHEADER header{};
  std::vector<RGBQUAD> palette;
  std::vector<std::uint32_t> masks;
  std::vector<std::uint8_t> bits;

  Bitmap(int width, int height, int bitCount) {
    header.biSize = sizeof(header);
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = 1;
    header.biBitCount = static_cast<std::uint16_t>(bitCount);
  }

  std::vector<std::uint8_t> Bytes() const {
    std::vector<std::uint8_t> bytes(sizeof(header));
    std::memcpy(bytes.data(), &header, sizeof(header));
    Append(bytes, masks.data(), masks.size() * sizeof(std::uint32_t));
    Append(bytes, palette.data(), palette.size() * sizeof(RGBQUAD));
    Append(bytes, bits.data(), bits.size());
    return bytes;
  }

 private:
  static void Append(std::vector<std::uint8_t>& bytes, void const* data, std::size_t size) {
    auto const* const from = static_cast<std::uint8_t const*>(data);
    bytes.insert(bytes.end(), from, from + size);
  }
};

DibPtr BlockOf(std::vector<std::uint8_t> const& bytes) {
  DibPtr block(GlobalAlloc(GMEM_MOVEABLE, bytes.size()));
  if (!bytes.empty()) std::memcpy(GlobalLock(block.get()), bytes.data(), bytes.size());
  GlobalUnlock(block.get());
  return block;
}

int Attach(COrbImage& image, Bitmap const& bitmap) { return image.AttachDIB(BlockOf(bitmap.Bytes()).get()); }

RGBQUAD Color(std::uint8_t red, std::uint8_t green, std::uint8_t blue) { return RGBQUAD{blue, green, red, 0}; }

std::vector<RGBQUAD> GrayRamp(int count) {
  std::vector<RGBQUAD> palette;
  for (int i = 0; i < count; ++i) {
    auto const v = static_cast<std::uint8_t>(i * 255 / (count - 1));
    palette.push_back(Color(v, v, v));
  }
  return palette;
}

void ExpectImage(COrbImage const& image, int width, int height, std::vector<float> const& samples) {
  EXPECT_EQ(-32, image.GetBitsPixel());
  EXPECT_EQ(width, image.GetWidth());
  EXPECT_EQ(height, image.GetHeight());
  EXPECT_TRUE(SameBits(samples, SamplesOf(image)));
}

TEST(AttachDib, OneBitBlackAndWhiteIsMono) {
  Bitmap bitmap(10, 2, 1);
  bitmap.palette = GrayRamp(2);
  bitmap.bits = {0x80, 0x40, 0, 0, 0x01, 0x00, 0, 0};  // bottom row first
  COrbImage image;
  ASSERT_EQ(1, Attach(image, bitmap));
  ExpectImage(image, 10, 2, {0, 0, 0, 0, 0, 0, 0, 255, 0, 0, 255, 0, 0, 0, 0, 0, 0, 0, 0, 255});
}

TEST(AttachDib, OneBitOfTwoColoursIsColour) {
  Bitmap bitmap(2, -1, 1);
  bitmap.palette = {Color(1, 2, 3), Color(40, 50, 60)};
  bitmap.bits = {0x40, 0, 0, 0};
  COrbImage image;
  ASSERT_EQ(1, Attach(image, bitmap));
  ExpectImage(image, 2, 1, {1, 40, 2, 50, 3, 60});
}

TEST(AttachDib, FourBitsHighNibbleFirst) {
  Bitmap bitmap(3, 1, 4);
  bitmap.palette = GrayRamp(16);
  bitmap.bits = {0x0f, 0x70, 0, 0};
  COrbImage image;
  ASSERT_EQ(1, Attach(image, bitmap));
  ExpectImage(image, 3, 1, {0, 255, 119});
}

TEST(AttachDib, EightBitGrayRampIsOnePlane) {
  Bitmap bitmap(3, 2, 8);
  bitmap.palette = GrayRamp(256);
  bitmap.bits = {1, 2, 3, 99, 4, 5, 255, 99};
  COrbImage image;
  ASSERT_EQ(1, Attach(image, bitmap));
  EXPECT_EQ(1, image.GetPlanes());
  EXPECT_EQ(2, image.GetDimension());
  ExpectImage(image, 3, 2, {4, 5, 255, 1, 2, 3});
  EXPECT_EQ(0.0, image.GetLevelMin(0));
  EXPECT_EQ(255.0, image.GetLevelMax(0));
}

TEST(AttachDib, EightBitColoursAreThreePlanes) {
  Bitmap bitmap(3, -2, 8);
  bitmap.palette = {Color(10, 20, 30), Color(40, 50, 60), Color(70, 80, 90)};
  bitmap.header.biClrUsed = 3;
  bitmap.bits = {0, 1, 2, 0, 2, 1, 0, 0};
  COrbImage image;
  ASSERT_EQ(1, Attach(image, bitmap));
  EXPECT_EQ(3, image.GetPlanes());
  EXPECT_EQ(3, image.GetDimension());
  ExpectImage(image, 3, 2, {10, 40, 70, 70, 40, 10, 20, 50, 80, 80, 50, 20, 30, 60, 90, 90, 60, 30});
}

TEST(AttachDib, IndexBeyondAShortPaletteIsBlack) {
  Bitmap bitmap(2, 1, 8);
  bitmap.palette = {Color(10, 20, 30), Color(40, 50, 60)};
  bitmap.header.biClrUsed = 2;
  bitmap.bits = {1, 200, 0, 0};
  COrbImage image;
  ASSERT_EQ(1, Attach(image, bitmap));
  ExpectImage(image, 2, 1, {40, 0, 50, 0, 60, 0});
}

TEST(AttachDib, ShortGrayRampIsOnePlane) {
  Bitmap bitmap(4, 1, 8);
  bitmap.palette = GrayRamp(16);
  bitmap.header.biClrUsed = 16;
  bitmap.bits = {0, 1, 15, 16};
  COrbImage image;
  ASSERT_EQ(1, Attach(image, bitmap));
  EXPECT_EQ(1, image.GetPlanes());
  ExpectImage(image, 4, 1, {0, 17, 255, 0});
}

TEST(AttachDib, GraysThatDoNotRiseAreThreePlanes) {
  Bitmap bitmap(2, 1, 1);
  bitmap.palette = {Color(255, 255, 255), Color(0, 0, 0)};
  bitmap.bits = {0x40, 0, 0, 0};
  COrbImage image;
  ASSERT_EQ(1, Attach(image, bitmap));
  ExpectImage(image, 2, 1, {255, 0, 255, 0, 255, 0});
}

TEST(AttachDib, SixteenBitsAreFiveEach) {
  Bitmap bitmap(3, 1, 16);
  bitmap.bits = {0x00, 0x7c, 0xe0, 0x03, 0x1f, 0x00, 0, 0};  // red, green, blue
  COrbImage image;
  ASSERT_EQ(1, Attach(image, bitmap));
  ExpectImage(image, 3, 1, {255, 0, 0, 0, 255, 0, 0, 0, 255});
}

TEST(AttachDib, SixteenBitsOfMasks) {
  Bitmap bitmap(4, 1, 16);
  bitmap.header.biCompression = BI_BITFIELDS;
  bitmap.masks = {0xf800, 0x07e0, 0x001f};
  bitmap.bits = {0x00, 0xf8, 0xe0, 0x07, 0x1f, 0x00, 0xff, 0xff};
  COrbImage image;
  ASSERT_EQ(1, Attach(image, bitmap));
  ExpectImage(image, 4, 1, {255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255});
}

TEST(AttachDib, TwentyFourBitsBottomUpAndTopDown) {
  std::vector<std::uint8_t> const bits = {3, 2, 1, 6, 5, 4, 0, 0, 9, 8, 7, 12, 11, 10, 0, 0};
  Bitmap bottomUp(2, 2, 24);
  bottomUp.bits = bits;
  COrbImage image;
  ASSERT_EQ(1, Attach(image, bottomUp));
  ExpectImage(image, 2, 2, {7, 10, 1, 4, 8, 11, 2, 5, 9, 12, 3, 6});
  Bitmap topDown(2, -2, 24);
  topDown.bits = bits;
  ASSERT_EQ(1, Attach(image, topDown));
  ExpectImage(image, 2, 2, {1, 4, 7, 10, 2, 5, 8, 11, 3, 6, 9, 12});
}

TEST(AttachDib, ThirtyTwoBitsIgnoreTheHighByte) {
  Bitmap bitmap(2, 1, 32);
  bitmap.bits = {3, 2, 1, 200, 6, 5, 4, 100};
  COrbImage image;
  ASSERT_EQ(1, Attach(image, bitmap));
  ExpectImage(image, 2, 1, {1, 4, 2, 5, 3, 6});
}

TEST(AttachDib, BlockStaysTheCallers) {
  Bitmap bitmap(2, 1, 32);
  bitmap.bits = {3, 2, 1, 0, 6, 5, 4, 0};
  std::vector<std::uint8_t> const bytes = bitmap.Bytes();
  DibPtr const block = BlockOf(bytes);
  COrbImage image;
  ASSERT_EQ(1, image.AttachDIB(block.get()));
  EXPECT_EQ(0, std::memcmp(bytes.data(), GlobalLock(block.get()), bytes.size()));
  EXPECT_EQ(0, GlobalUnlock(block.get()));
}

TEST(AttachDib, BaseFormStaysAtEightBits) {
  Bitmap bitmap(2, 1, 32);
  bitmap.bits = {3, 2, 1, 0, 6, 5, 4, 0};
  CImage image;
  ASSERT_NE(0, image.AttachDIB(BlockOf(bitmap.Bytes()).get()));
  EXPECT_EQ(8, image.GetBitsPixel());
  EXPECT_EQ(4.0, image.GetPixel(1, 0, 0));
}

TEST(AttachDib, EveryShorterBlockIsRefused) {
  for (int depth : {1, 4, 8, 16, 24, 32}) {
    Bitmap bitmap(5, 3, depth);
    if (depth <= 8) bitmap.palette = GrayRamp(1 << depth);
    bitmap.bits.assign(static_cast<std::size_t>((5 * depth + 31) / 32 * 4 * 3), 0);
    std::vector<std::uint8_t> const whole = bitmap.Bytes();
    COrbImage image(-32, 2, 2, 1, 1.0, 0.0, 1, nullptr, nullptr);
    SetSamples(image, {1, 2, 3, 4});
    for (std::size_t size = 0; size < whole.size(); size += size + 9 < whole.size() ? 7 : 1) {
      std::vector<std::uint8_t> const cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
      EXPECT_EQ(0, image.AttachDIB(BlockOf(cut).get())) << depth << " bits, " << size << " bytes";
    }
    ExpectImage(image, 2, 2, {1, 2, 3, 4});
    EXPECT_EQ(1, image.AttachDIB(BlockOf(whole).get())) << depth;
  }
}

TEST(AttachDib, HeadersThatCannotBeAreRefused) {
  COrbImage image(-32, 2, 2, 1, 1.0, 0.0, 1, nullptr, nullptr);
  SetSamples(image, {1, 2, 3, 4});
  auto refuse = [&](char const* what, auto change) {
    Bitmap bitmap(4, 4, 24);
    bitmap.bits.assign(48, 7);
    change(bitmap);
    EXPECT_EQ(0, Attach(image, bitmap)) << what;
  };
  refuse("no width", [](Bitmap& b) { b.header.biWidth = 0; });
  refuse("negative width", [](Bitmap& b) { b.header.biWidth = -4; });
  refuse("no height", [](Bitmap& b) { b.header.biHeight = 0; });
  refuse("least height", [](Bitmap& b) { b.header.biHeight = INT_MIN; });
  refuse("huge", [](Bitmap& b) { b.header.biWidth = b.header.biHeight = INT_MAX; });
  refuse("huge of one bit", [](Bitmap& b) {
    b.header.biWidth = b.header.biHeight = INT_MAX;
    b.header.biBitCount = 1;
  });
  refuse("short header", [](Bitmap& b) { b.header.biSize = 12; });
  refuse("header beyond the block", [](Bitmap& b) { b.header.biSize = 0xffffffffu; });
  refuse("header over the samples", [](Bitmap& b) { b.header.biSize = 80; });
  refuse("seven bits", [](Bitmap& b) { b.header.biBitCount = 7; });
  refuse("no bits", [](Bitmap& b) { b.header.biBitCount = 0; });
  refuse("packed rows", [](Bitmap& b) { b.header.biCompression = 1; });
  refuse("palette beyond the block", [](Bitmap& b) {
    b.header.biBitCount = 8;
    b.header.biClrUsed = 0xffffffffu;
  });
  ExpectImage(image, 2, 2, {1, 2, 3, 4});
  EXPECT_EQ(0, image.AttachDIB(nullptr));
}

TEST(AttachDib, FailureDoesNotConvert) {
  COrbImage image(-32, 2, 2, 1, 1.0, 0.0, 1, nullptr, nullptr);
  ASSERT_NE(0, image.ChangeBits(16, 1, 1, nullptr, nullptr));
  EXPECT_EQ(0, image.AttachDIB(nullptr));
  EXPECT_EQ(16, image.GetBitsPixel());
}

}  // namespace
}  // namespace orb::test
